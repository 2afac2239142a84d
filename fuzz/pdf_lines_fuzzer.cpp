// Cuts any bytes into lines and tokens in all ways that the PDF reader knows, and compares the
// results with those of plain loops.

#include "fuzz/PlainDocument.h"
#include "pdf_reader/CParamArray.h"
#include "pdf_reader/LineUtility.h"
#include "pdf_reader/ReferenceValues.h"
#include "pdf_reader/TokenReader.h"
#include "testing/LineStarts.h"
#include "testing/TextStream.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

namespace {

using Tokens = std::vector<std::string>;

void require(bool holds, const char *what) {
  if (holds)
    return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

Tokens tokensOf(const CParamArray &array, unsigned long from = 0) {
  Tokens tokens;
  for (unsigned long i = from; i < array.GetCount(); ++i)
    tokens.emplace_back(array.GetParam(i));
  return tokens;
}

void checkReader(std::string &text, bool keepsComments) {
  TextStream stream(text);
  if (stream.GetSize() != static_cast<long>(text.size()))
    return;
  TokenReader reader(stream,
                     keepsComments ? TokenReader::Comments::keep : TokenReader::Comments::cut);
  CParamArray array;
  PlainDocument plain(text, 1L << 40);
  plain.forEachLine(0, keepsComments, [&](const Tokens &tokens, long position, bool isComplete) {
    require(reader.next(array), "fewer lines");
    require(tokensOf(array, reader.lineIndex()) == tokens, "other tokens");
    require(reader.linePosition() == position, "other position");
    require(reader.isGroupComplete() == isComplete, "other groups");
    if (isComplete)
      array.DeleteParam(0, array.GetCount());
    return true;
  });
  require(!reader.next(array) && reader.result() == 1, "more lines");
}

void checkFirstLine(const std::string &text) {
  Tokens first;
  const std::string line = text.substr(0, text.find_first_of("\r\n"));
  PlainDocument plain(line, 1L << 40);
  plain.forEachLine(0, false, [&](const Tokens &tokens, long, bool) {
    first.insert(first.end(), tokens.begin(), tokens.end());
    return true;
  });
  CParamArray array;
  if (text.size() <= 1024) {
    require(array.Parse(text.data(), text.size()) == (first.empty() ? 0 : 1), "parse");
    require(tokensOf(array) == first, "other tokens of the first line");
  }
  array.ParseObject(text.data(), text.size(), "<<", ">>");

  CObjectList list;
  ReferenceValues values(array);
  for (unsigned long i = 1; i < array.GetCount(); ++i) {
    if (array.token(i) != "[")
      continue;
    const auto length = static_cast<unsigned long>(GetArrayLength(&array, static_cast<int>(i)));
    const unsigned long used = values.readBehind(i - 1, list);
    const unsigned long rest = array.GetCount() - i;
    require(used == (rest < 3     ? CPDFSection::failed
                     : length < 5 ? 4
                                  : length + 1),
            "other references");
  }
}

void checkLines(std::string &text) {
  auto *const bytes = reinterpret_cast<unsigned char *>(text.data());
  const auto starts = lineStarts(text, LineOrder::Forward);
  require(std::is_sorted(starts.begin(), starts.end()), "lines not in order");

  unsigned long last = text.size() + 1;
  for (const unsigned long start : lineStarts(text, LineOrder::Backward)) {
    require(start < last, "lines not in order backwards");
    last = start;
  }

  // The keyword is found in the last line in which it is found.
  const auto *const keyword = reinterpret_cast<const unsigned char *>("ab");
  unsigned char *expected = nullptr;
  for (const unsigned long start : starts) {
    unsigned char *found = nullptr;
    FindKeyWordLineRev(bytes + start, text.size() - start, keyword, &found);
    expected = found != nullptr ? found : expected;
  }
  unsigned char *found = nullptr;
  require(FindKeyWordRev(bytes, text.size(), keyword, &found) == 1 && found == expected,
          "other keyword");

  std::vector<tagFINDINFO> room(text.size() / 2 + 3);
  auto *const list = reinterpret_cast<tagFINDINFOLIST *>(room.data());
  ParseKeyWordItem(bytes, text.size(), list);
  require(list->count <= (text.size() + 1) / 2, "too many words");
}

void checkHexString(const std::string &text) {
  const std::string token = "<" + text.substr(0, text.find('\0')) + ">";
  std::string expected;
  int high = -1;
  for (const char c : token) {
    const auto place = std::string_view("0123456789abcdefABCDEF").find(c);
    if (place == std::string_view::npos)
      continue;
    const int value = static_cast<int>(place < 16 ? place : place - 6);
    if (high >= 0)
      expected += static_cast<char>(high * 16 + value);
    high = high >= 0 ? -1 : value;
  }
  if (high >= 0)
    expected += static_cast<char>(high * 16);
  const auto *const bytes = reinterpret_cast<const unsigned char *>(token.c_str());
  unsigned long size = 0;
  require(ConvertStringObjectToString(bytes, nullptr, &size) == 1, "no size");
  require(size == expected.size() + 1, "other size");
  for (const unsigned long room : {size, size / 2}) {
    std::vector<unsigned char> out(room + 1);
    unsigned long done = room;
    require(ConvertStringObjectToString(bytes, out.data(), &done) == 1, "not decoded");
    require(std::string(out.begin(), out.begin() + static_cast<long>(done)) ==
                expected.substr(0, room),
            "other bytes");
  }
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::string text(reinterpret_cast<const char *>(data), size);
  // Bytes stand around the edges of blocks if some lead stands before them.
  if (!text.empty() && (data[0] & 1) != 0)
    text.insert(0, std::string(1000 + data[0] % 32, 'l') + (data[0] % 3 == 0 ? "\n" : " "));
  checkReader(text, false);
  checkReader(text, true);
  checkFirstLine(text);
  checkLines(text);
  checkHexString(text);
  return 0;
}
