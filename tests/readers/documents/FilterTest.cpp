#include "readers/documents/Filter.h"
#include "testing/CompressedDocument.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace searchsystem {
namespace {

using Kind = FilterStep::Kind;

class Collector final : public ByteSink {
public:
  bool take(std::string_view piece) override {
    bytes += piece;
    return true;
  }
  std::string bytes;
};

std::string decoded(const std::vector<FilterStep> &steps, std::string_view data,
                    std::size_t pieceSize = SIZE_MAX, std::uint64_t budgetSize = 1 << 24) {
  InflaterPool pool;
  InflationBudget budget(budgetSize);
  Collector collector;
  FilterChain chain(steps, collector, pool, budget);
  while (!data.empty()) {
    const std::string_view piece = data.substr(0, pieceSize);
    if (!chain.take(piece))
      break;
    data.remove_prefix(piece.size());
  }
  chain.finish();
  return collector.bytes;
}

std::string fromHex(std::string_view hex) { return decoded({{.kind = Kind::asciiHex}}, hex); }

// The codes of a table that is never full, as a writer without dictionary search would give them:
// for each byte its own code, so that only the widths change.
std::string plainLZW(std::string_view data, bool changesEarly) {
  std::string out;
  unsigned bits = 0, count = 0, width = 9, next = 258;
  const auto put = [&](unsigned code) {
    bits = bits << width | code;
    for (count += width; count >= 8; count -= 8)
      out += static_cast<char>(bits >> (count - 8));
  };
  put(256);
  for (std::size_t i = 0; i < data.size(); ++i) {
    put(static_cast<unsigned char>(data[i]));
    next += i > 0 ? 1 : 0;
    if (next + (changesEarly ? 1 : 0) >= 1U << width && width < 12)
      ++width;
    if (next == 4094) {
      put(256);
      next = 257;
      width = 9;
    }
  }
  put(257);
  return count == 0 ? out : out += static_cast<char>(bits << (8 - count));
}

std::string counted(std::size_t size) {
  std::string text;
  for (std::size_t i = 0; text.size() < size; ++i)
    text += std::to_string(i) + " ";
  return text;
}

struct Row {
  std::string name;
  std::vector<FilterStep> steps;
  std::string data;
  std::string expected;
};

void PrintTo(const Row &row, std::ostream *out) { *out << row.name; }

FilterStep predicted(std::int64_t predictor, std::int64_t colors, std::int64_t bits,
                     std::int64_t columns) {
  return {Kind::flate, predictor, colors, bits, columns, true};
}

const FilterStep flate{.kind = Kind::flate};
const FilterStep hex{.kind = Kind::asciiHex};
const FilterStep base85{.kind = Kind::ascii85};
const FilterStep runs{.kind = Kind::runLength};
const FilterStep lzw{.kind = Kind::lzw};
FilterStep lateLZW() {
  FilterStep step = lzw;
  step.changesEarly = false;
  return step;
}

std::string toHex(std::string_view data) {
  std::string text;
  for (const char c : data)
    for (const int digit : {static_cast<unsigned char>(c) >> 4, c & 15})
      text += "0123456789ABCDEF"[digit];
  return text;
}

std::string deflated(std::string_view data) { return CompressedDocument::deflated(data); }

class FilterTest : public testing::TestWithParam<Row> {};

TEST_P(FilterTest, Decodes) {
  const Row &row = GetParam();
  EXPECT_EQ(decoded(row.steps, row.data), row.expected);
  for (const std::size_t pieceSize : {1, 2, 7})
    EXPECT_EQ(decoded(row.steps, row.data, pieceSize), row.expected) << pieceSize;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, FilterTest,
    testing::Values(
        Row{"Hex", {hex}, "48 65\n6c6C6F2>junk", "Hello "},
        Row{"Base85", {base85}, "<~87cURD]i,\"Ebo80~>junk", "Hello World!"},
        Row{"Base85OddSizeZerosNoEnd", {base85}, "z 87c\nUR DZ", std::string(4, '\0') + "Hello"},
        Row{"Runs",
            {runs},
            "\2abc\xFE"
            "d\x80junk",
            "abcddd"},
        Row{"Flate", {flate}, deflated(counted(200000)), counted(200000)},
        Row{"FlateBehindLineEnd", {flate}, "\r\n" + deflated("text"), "text"},
        Row{"FlateWithWrongHeader", {flate}, "\1\1" + deflated("text").substr(2), "text"},
        Row{"FlateWithoutCheckSum", {flate}, deflated("text").substr(0, 8), "text"},
        Row{"LZW", {lzw}, fromHex("800B6050220C0C8501"), "-----A---B"},
        Row{"LZWWidths", {lzw}, plainLZW(counted(20000), true), counted(20000)},
        Row{"LZWWidthsLate", {lateLZW()}, plainLZW(counted(20000), false), counted(20000)},
        Row{"LZWCodeThatCannotBe", {lzw}, fromHex("8010E0FF"), "C"},
        Row{"PNGRows",
            {predicted(15, 1, 8, 4)},
            deflated(fromHex("00 61626364 01 61010101 02 00000001 03 31313132 04 00000000")),
            fromHex("61626364 61626364 61626365 6192ABBA 6192ABBA")},
        Row{"TIFFBytes",
            {predicted(2, 3, 8, 2)},
            deflated(fromHex("616263 010101 717273 020202")),
            "abcbcdqrsstu"},
        Row{"TIFFWords",
            {predicted(2, 1, 16, 2)},
            deflated(fromHex("60FF 0063")),
            fromHex("60FF6162")},
        Row{"TIFFBits",
            {predicted(2, 1, 4, 4)},
            deflated(fromHex("61 00 1F 00")),
            fromHex("6777 1000")},
        Row{"PredictorWithRowsThatCannotBe", {predicted(12, 1, 8, -1)}, deflated("text"), "text"},
        Row{"Chain", {hex, flate, flate}, toHex(deflated(deflated("text"))), "text"},
        Row{"Image", {flate, {.kind = Kind::opaque}}, deflated("text"), ""}),
    [](const auto &tested) { return tested.param.name; });

// What is there of a broken stream comes out; nothing that follows the fault makes it disappear.
TEST(FilterFaultTest, KeepsWhatWasDecoded) {
  const std::string text = counted(300000);
  for (const auto &[step, data] : std::vector<std::pair<FilterStep, std::string>>{
           {flate, deflated(text)}, {lzw, plainLZW(text, true)}, {hex, toHex(text)}}) {
    for (const std::size_t part : {data.size() / 4, data.size() / 2, data.size() - 1}) {
      std::string cut = decoded({step}, data.substr(0, part));
      // Half a byte may be its end.
      cut.pop_back();
      EXPECT_TRUE(text.starts_with(cut) && cut.size() + 300 > text.size() * part / data.size() / 2)
          << part << " " << cut.size();
    }
  }
  const std::string broken =
      decoded({flate}, deflated(text).replace(50000, 400, std::string(400, '\xFF')));
  EXPECT_EQ(broken.substr(0, 100000), text.substr(0, 100000));
}

TEST(FilterFaultTest, EndsWithTheBudget) {
  const std::string bomb = deflated(deflated(std::string(std::size_t{32} << 20, 'a')));
  EXPECT_LE(decoded({flate, flate}, bomb, SIZE_MAX, 1 << 20).size(), 1U << 20);
}

} // namespace
} // namespace searchsystem
