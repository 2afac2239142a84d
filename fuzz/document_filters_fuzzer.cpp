// Sends any bytes through a chain of filters, whole and in pieces, and parses what comes out. The
// first bytes choose filters and parameters.

#include "readers/documents/Filter.h"
#include "readers/documents/ObjectParser.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace searchsystem;

constexpr std::uint64_t mostBytes = 1 << 20;

class Collector final : public ByteSink {
public:
  bool take(std::string_view piece) override {
    bytes += piece;
    return true;
  }
  void finish() override { ++ends; }
  std::string bytes;
  int ends = 0;
};

std::string decoded(const std::vector<FilterStep> &steps, std::string_view data,
                    std::size_t pieceSize, bool &isWhole) {
  InflaterPool pool;
  InflationBudget budget(mostBytes);
  Collector collector;
  FilterChain chain(steps, collector, pool, budget);
  bool isWanted = true;
  for (; isWanted && !data.empty(); data.remove_prefix(std::min(pieceSize, data.size())))
    isWanted = chain.take(data.substr(0, pieceSize));
  chain.finish();
  if (collector.ends != 1 && !budget.isSpent())
    std::abort();
  isWhole = !budget.isSpent();
  return collector.bytes;
}

std::size_t parsed(std::string_view text, ObjectParser::Syntax syntax) {
  Arena arena;
  ObjectParser parser(arena, syntax);
  parser.reset(text);
  std::size_t count = 0;
  for (std::size_t before = 0; parser.next().kind() != Object::Kind::end; ++count) {
    if (parser.position() <= before && count > 0)
      std::abort();
    before = parser.position();
  }
  return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  constexpr std::size_t headSize = 6;
  if (size < headSize)
    return 0;
  constexpr std::array predictors{1, 2, 10, 15};
  constexpr std::array widths{1, 2, 4, 8, 16, 3};
  std::vector<FilterStep> steps;
  for (std::size_t i = 0; i < 1U + data[0] % 3; ++i) {
    FilterStep step;
    step.kind = static_cast<FilterStep::Kind>(data[1 + i] % 6);
    step.predictor = predictors[data[4] % predictors.size()];
    step.colors = data[4] / 4 % 5;
    step.bitsPerComponent = widths[data[4] / 32 % widths.size()];
    step.columns = data[5];
    step.changesEarly = data[1 + i] < 128;
    steps.push_back(step);
  }
  const std::string_view bytes(reinterpret_cast<const char *>(data) + headSize, size - headSize);
  bool isWhole = false;
  bool isWholeInPieces = false;
  const std::string whole = decoded(steps, bytes, SIZE_MAX, isWhole);
  const std::string inPieces = decoded(steps, bytes, 1 + data[0] / 3, isWholeInPieces);
  if (isWhole != isWholeInPieces || (isWhole && whole != inPieces)) {
    std::fprintf(stderr, "pieces give other bytes\n");
    std::abort();
  }
  static_cast<void>(parsed(whole, ObjectParser::Syntax::objects));
  static_cast<void>(parsed(whole, ObjectParser::Syntax::content));
  return 0;
}
