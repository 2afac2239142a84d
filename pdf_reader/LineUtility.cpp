#include "pdf_reader/LineUtility.h"

#include "pdf_reader/HexString.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>

namespace searchsystem {

namespace {

std::string_view firstLine(const unsigned char *buf, unsigned long len) noexcept {
  const auto *const end =
      std::find_if(buf, buf + len, [](unsigned char c) { return IsCRLF(c) != 0; });
  return {reinterpret_cast<const char *>(buf), static_cast<std::size_t>(end - buf)};
}

int trim(std::string_view line, unsigned long *outStart, unsigned long *outLength) noexcept {
  constexpr std::string_view trimmed("\0\t ", 3);
  const std::size_t size = line.find_last_not_of(trimmed) + 1;
  const std::size_t start = std::min(line.find_first_not_of(trimmed), size);
  if (outStart != nullptr)
    *outStart = start;
  if (outLength != nullptr)
    *outLength = size - start;
  return 1;
}

// NOLINTNEXTLINE(readability-non-const-parameter): the record has it
char **newIterator(unsigned char *buf, unsigned long len, unsigned long position,
                   bool isReverse) noexcept {
  if (buf == nullptr || len > std::numeric_limits<std::uint32_t>::max())
    return nullptr;
  auto *const iterator = new (std::nothrow)
      tagFINDLINE{reinterpret_cast<char *>(buf), static_cast<std::uint32_t>(len),
                  static_cast<std::uint32_t>(position), static_cast<std::uint8_t>(isReverse)};
  return iterator == nullptr ? nullptr : &iterator->buffer;
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

bool separatesWords(char c) noexcept { return classOf(c) == ByteClass::trim || c == '\f'; }

/// The offset of the comment, or the size of the text. A doubled percent sign is text; one at the
/// end is, too, unless `isAtEnd`.
std::size_t commentIn(std::string_view text, bool isAtEnd) noexcept {
  for (std::size_t i = 0; i < text.size(); ++i)
    if (text[i] == '%') {
      if (i + 1 == text.size() ? isAtEnd : text[i + 1] != '%')
        return i;
      ++i;
    }
  return text.size();
}

} // namespace

int GetLineSize(const unsigned char *buf, unsigned long len, unsigned long *outSize) noexcept {
  if (buf == nullptr || outSize == nullptr)
    return 0;
  *outSize = firstLine(buf, len).size();
  return 1;
}

int GetLineInfo(const unsigned char *buf, unsigned long len, unsigned long *outStart,
                unsigned long *outLength) noexcept {
  if (buf == nullptr)
    return 0;
  const std::string_view line = firstLine(buf, len);
  return trim(line.substr(0, commentIn(line, false)), outStart, outLength);
}

int GetLineInfo_WithComment(const unsigned char *buf, unsigned long len, unsigned long *outStart,
                            unsigned long *outLength) noexcept {
  return buf == nullptr ? 0 : trim(firstLine(buf, len), outStart, outLength);
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
  tagFINDINFO *next = list->words;
  const std::string_view text = firstLine(line, len);
  forEachWord(text, separatesWords, [&](std::string_view word) {
    *next++ = {line + (word.data() - text.data()), static_cast<std::uint32_t>(word.size())};
    ++list->count;
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
  const std::string_view text = firstLine(line, len);
  forEachWord(text, separatesWords, [&](std::string_view word) {
    const std::size_t size = commentIn(word, true);
    if (size > 0 && word.substr(0, size) == sought)
      *out = line + (word.data() - text.data());
    return *out == nullptr && size == word.size();
  });
  return 1;
}

int FindKeyWordRev(unsigned char *buf, unsigned long len, const unsigned char *keyword,
                   unsigned char **out) noexcept {
  if (buf == nullptr || keyword == nullptr || out == nullptr)
    return 0;
  *out = nullptr;
  const std::string_view sought(reinterpret_cast<const char *>(keyword));
  // Few blocks contain the keyword at all, which is quick to find out.
  if (sought.empty() || std::string_view(reinterpret_cast<const char *>(buf), len).find(sought) ==
                            std::string_view::npos)
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
    const auto count = std::count_if(digits.begin(), digits.end(),
                                     [](char c) { return hexDigitValue(c) != noHexDigit; });
    *ioSize = static_cast<unsigned long>(count + 1) / 2 + 1;
    return 1;
  }
  std::memset(out, 0, *ioSize);
  *ioSize = decodeHexDigits(digits, reinterpret_cast<char *>(out), *ioSize);
  return 1;
}

} // namespace searchsystem
