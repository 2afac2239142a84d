#include "pdf_reader/CPDFSection.h"

#include "pdf_reader/LineUtility.h"
#include "streams/ZeroWithoutMemory.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace searchsystem {

int CPDFSection::ParseLine(CParamArray *tokens, char *goOn, void * /*context*/) {
  if (tokens == nullptr || goOn == nullptr)
    return 0;
  try {
    return takeTokens(*tokens, *goOn);
  } catch (const std::bad_alloc &) {
    isMemoryShort_ = true;
    return 0;
  }
}

int CPDFSection::Parse(CIOStream *stream) {
  if (stream != nullptr)
    return zeroWithoutMemory([&] { return read(*stream); });
  ReleaseParse();
  return 0;
}

int CPDFSection::takeTokens(CParamArray &tokens, char &goOn) {
  return walkObject(tokens, goOn, [](unsigned long) { return 1UL; });
}

int CPDFSection::read(CIOStream &stream) {
  ReleaseParse();
  TokenReader reader(stream, comments_, endAt_, marks_);
  tokens_.Reset();
  char goOn = 1;
  int result = 1;
  while (result == 1 && goOn != 0 && reader.next(tokens_))
    if (reader.isGroupComplete())
      result = handOver(goOn);
  parsedTo_ = reader.lineEnd();
  return goOn != 0 && result == 1 ? reader.result() : result;
}

int CPDFSection::handOver(char &goOn) {
  isMemoryShort_ = false;
  const int result = ParseLine(&tokens_, &goOn, nullptr);
  if (isMemoryShort_)
    throw std::bad_alloc();
  return result;
}

int CPDFSection::Release() { return ReleaseParse(); }

int CPDFSection::ReleaseParse() {
  isInside_ = false;
  return 1;
}

int CPDFSection::FindKeyWordRev(CIOStream *stream, long length, const unsigned char *keyword,
                                long *found) {
  if (stream == nullptr || keyword == nullptr || found == nullptr)
    return 0;
  return zeroWithoutMemory([&] { return findBackwards(*stream, length, keyword, *found); });
}

int CPDFSection::findBackwards(CIOStream &stream, long length, const unsigned char *keyword,
                               long &found) {
  found = -1;
  const auto keywordSize = static_cast<long>(std::strlen(reinterpret_cast<const char *>(keyword)));
  const long blockSize = std::max(1024L, keywordSize + 1);
  std::vector<unsigned char> block(static_cast<std::size_t>(blockSize));
  const long base = stream.Tell();
  // If the same number of bytes is left twice, it is left again and again. `leftBefore` is renewed
  // after 1, 2, 4, 8... rounds, which detects any such cycle.
  long leftBefore = -1;
  long rounds = 0;
  for (long left = length; left > 0 && left != leftBefore;) {
    if ((rounds & (rounds - 1)) == 0)
      leftBefore = left;
    ++rounds;
    const long size = left < blockSize ? blockSize - left : blockSize;
    left -= size;
    long done = 0;
    unsigned char *match = nullptr;
    if (stream.Seek(base + left, streamSeekBegin) != 1 ||
        stream.Read(block.data(), size, &done) != 1 ||
        searchsystem::FindKeyWordRev(block.data(), static_cast<unsigned long>(done), keyword,
                                     &match) != 1)
      return 0;
    if (match != nullptr) {
      found = left + (match - block.data());
      return 1;
    }
    if (left != 0)
      left += keywordSize;
  }
  return 1;
}

} // namespace searchsystem
