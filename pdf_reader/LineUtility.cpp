#include "pdf_reader/LineUtility.h"

#include "pdf_reader/HexString.h"
#include "streams/MemoryShortage.h"

#include <cstring>
#include <limits>
#include <new>
#include <string_view>

namespace searchsystem {

namespace {

unsigned long lineSize(const unsigned char *buf, unsigned long len) noexcept {
  unsigned long size = 0;
  while (size < len && IsCRLF(buf[size]) == 0)
    ++size;
  return size;
}

void trim(const unsigned char *line, unsigned long size, unsigned long *outStart,
          unsigned long *outLength) noexcept {
  while (size > 0 && IsTrim(line[size - 1]) != 0)
    --size;
  unsigned long start = 0;
  while (start < size && IsTrim(line[start]) != 0)
    ++start;
  if (outStart != nullptr)
    *outStart = start;
  if (outLength != nullptr)
    *outLength = size - start;
}

// NOLINTNEXTLINE(readability-non-const-parameter): kept as what it is
char **newIterator(unsigned char *buf, unsigned long len, unsigned long position,
                   bool isReverse) noexcept {
  if (buf == nullptr || len > std::numeric_limits<std::uint32_t>::max())
    return nullptr;
  auto *const iterator = new (std::nothrow)
      tagFINDLINE{reinterpret_cast<char *>(buf), static_cast<std::uint32_t>(len),
                  static_cast<std::uint32_t>(position), static_cast<std::uint8_t>(isReverse)};
  if (iterator == nullptr) {
    MemoryShortage::note();
    return nullptr;
  }
  return &iterator->buffer;
}

tagFINDLINE *recordOf(char **iter) noexcept { return reinterpret_cast<tagFINDLINE *>(iter); }

bool isLineEnd(const tagFINDLINE &lines, std::uint32_t position) noexcept {
  return classOf(lines.buffer[position]) == ByteClass::lineEnd;
}

bool isPair(const tagFINDLINE &lines, std::uint32_t position) noexcept {
  return lines.buffer[position] == '\r' && lines.buffer[position + 1] == '\n';
}

std::uint32_t nextForward(tagFINDLINE &lines) noexcept {
  const std::uint32_t start = lines.position;
  std::uint32_t end = start;
  while (end < lines.length && !isLineEnd(lines, end))
    ++end;
  if (end < lines.length)
    end += end + 1 < lines.length && isPair(lines, end) ? 2 : 1;
  lines.position = end;
  return start;
}

std::uint32_t nextBackward(tagFINDLINE &lines) noexcept {
  // Behind the first line, the position is that of the line end before it.
  const bool isAtLineEnd = lines.position < lines.length && isLineEnd(lines, lines.position);
  std::uint32_t last = isAtLineEnd ? lines.position : lines.position - 1;
  if (isLineEnd(lines, last)) {
    if (last > 1 && isPair(lines, last - 1))
      last -= 2;
    else if (last > 0)
      --last;
  }
  std::uint32_t end = last;
  while (end > 0 && !isLineEnd(lines, end))
    --end;
  lines.position = end;
  return end == 0 || end == last ? end : end + 1;
}

bool separatesWords(unsigned char byte) noexcept { return IsTrim(byte) != 0 || byte == '\f'; }

/// Calls `take` with each word of a line, until it answers false.
template <class Take> void forEachWord(unsigned char *line, unsigned long len, Take take) {
  const unsigned long size = lineSize(line, len);
  unsigned long i = 0;
  while (i < size) {
    while (i < size && separatesWords(line[i]))
      ++i;
    const unsigned long start = i;
    while (i < size && !separatesWords(line[i]))
      ++i;
    if (i > start && !take(line + start, i - start))
      return;
  }
}

std::string_view viewOf(const unsigned char *bytes, unsigned long len) noexcept {
  return {reinterpret_cast<const char *>(bytes), len};
}

/// Where a comment begins in a word, or its size. A percent sign at the end begins one here.
std::size_t commentIn(std::string_view word) noexcept {
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (classOf(word[i]) != ByteClass::comment)
      continue;
    if (i + 1 == word.size() || classOf(word[i + 1]) != ByteClass::comment)
      return i;
    ++i;
  }
  return word.size();
}

} // namespace

int GetLineSize(const unsigned char *buf, unsigned long len, unsigned long *outSize) noexcept {
  if (buf == nullptr || outSize == nullptr)
    return 0;
  *outSize = lineSize(buf, len);
  return 1;
}

int GetLineInfo(const unsigned char *buf, unsigned long len, unsigned long *outStart,
                unsigned long *outLength) noexcept {
  if (buf == nullptr)
    return 0;
  unsigned long size = lineSize(buf, len);
  for (unsigned long i = 0; i + 1 < size; ++i) {
    if (IsComment(buf[i]) == 0)
      continue;
    if (IsComment(buf[i + 1]) == 0)
      size = i;
    ++i;
  }
  trim(buf, size, outStart, outLength);
  return 1;
}

int GetLineInfo_WithComment(const unsigned char *buf, unsigned long len, unsigned long *outStart,
                            unsigned long *outLength) noexcept {
  if (buf == nullptr)
    return 0;
  trim(buf, lineSize(buf, len), outStart, outLength);
  return 1;
}

char **FindLine(unsigned char *buf, unsigned long len) noexcept {
  return newIterator(buf, len, 0, false);
}

char **RevFindLine(unsigned char *buf, unsigned long len) noexcept {
  return newIterator(buf, len, len, true);
}

int FindNextLine(char **iter, unsigned long *outStart) noexcept {
  if (iter == nullptr)
    return 0;
  tagFINDLINE &lines = *recordOf(iter);
  const bool isReverse = lines.reverse != 0;
  if (isReverse ? lines.position == 0 : lines.position >= lines.length)
    return 0;
  const std::uint32_t start = isReverse ? nextBackward(lines) : nextForward(lines);
  if (outStart != nullptr)
    *outStart = start;
  return 1;
}

void FindLineClose(char **iter) noexcept { delete recordOf(iter); }

int ParseKeyWordItem(unsigned char *line, unsigned long len, tagFINDINFOLIST *list) noexcept {
  if (line == nullptr || list == nullptr)
    return 1;
  list->count = 0;
  forEachWord(line, len, [list](unsigned char *word, unsigned long length) {
    tagFINDINFO *const words = list->words;
    words[list->count++] = {word, static_cast<std::uint32_t>(length)};
    return true;
  });
  return 1;
}

int FindKeyWordLineRev(unsigned char *line, unsigned long len, const unsigned char *keyword,
                       unsigned char **out) noexcept {
  if (out != nullptr)
    *out = nullptr;
  if (line == nullptr || keyword == nullptr || out == nullptr)
    return 0;
  const std::string_view sought(reinterpret_cast<const char *>(keyword));
  forEachWord(line, len, [&](unsigned char *word, unsigned long length) {
    const std::string_view text = viewOf(word, length);
    const std::size_t size = commentIn(text);
    if (size > 0 && text.substr(0, size) == sought)
      *out = word;
    return *out == nullptr && size == text.size();
  });
  return 1;
}

int FindKeyWordRev(unsigned char *buf, unsigned long len, const unsigned char *keyword,
                   unsigned char **out) noexcept {
  if (buf == nullptr || keyword == nullptr || out == nullptr)
    return 0;
  *out = nullptr;
  const std::string_view sought(reinterpret_cast<const char *>(keyword));
  // Few blocks of a file hold the keyword at all, and to look for its bytes is quick.
  if (sought.empty() || viewOf(buf, len).find(sought) == std::string_view::npos)
    return 1;
  while (len > 0 && *out == nullptr) {
    unsigned long start = len;
    while (start > 0 && IsCRLF(buf[start - 1]) == 0)
      --start;
    FindKeyWordLineRev(buf + start, len - start, keyword, out);
    len = start > 0 ? start - 1 : 0;
  }
  return 1;
}

int ConvertStringObjectToString(const unsigned char *token, unsigned char *out,
                                unsigned long *ioSize) noexcept {
  if (token == nullptr || ioSize == nullptr)
    return 0;
  const std::string_view text(reinterpret_cast<const char *>(token));
  if (!isHexString(text))
    return 0;
  const std::string_view digits = digitsOfHexString(text);
  if (out == nullptr) {
    *ioSize = (countHexDigits(digits) + 1) / 2 + 1;
    return 1;
  }
  std::memset(out, 0, *ioSize);
  *ioSize = decodeHexDigits(digits, reinterpret_cast<char *>(out), *ioSize);
  return 1;
}

} // namespace searchsystem
