#include "readers/documents/CompactFont.h"

#include <algorithm>
#include <cstddef>

namespace searchsystem {

namespace {

// Operators of the top dictionary; those of two bytes begin with 12.
constexpr std::uint32_t charsetOperator = 15;
constexpr std::uint32_t encodingOperator = 16;
constexpr std::uint32_t charStringsOperator = 17;
constexpr std::uint32_t registryOperator = 12 << 8 | 30;
/// Charsets and encodings below are predefined ones.
constexpr std::uint32_t firstOwnCharset = 3;
constexpr std::uint32_t firstOwnEncoding = 2;

} // namespace

CompactFont::CompactFont(std::string_view program) : program_(program) {
  const Index names = indexAt(program_.byte(2));
  const Index dictionaries = indexAt(names.end);
  strings_ = indexAt(dictionaries.end);
  readTopDictionary(item(dictionaries, 0));
  readCharset(std::min<std::uint32_t>(indexAt(charStrings_).count, 0xFFFF));
  readEncoding();
}

CompactFont::Index CompactFont::indexAt(std::size_t at) const noexcept {
  Index index;
  index.count = program_.word(at);
  if (index.count == 0) {
    index.end = at + 2;
    return index;
  }
  index.offsetSize = std::clamp<std::size_t>(program_.byte(at + 2), 1, 4);
  index.offsets = at + 3;
  index.data = index.offsets + (index.count + std::size_t{1}) * index.offsetSize - 1;
  index.end = index.data +
              program_.number(index.offsets + index.count * index.offsetSize, index.offsetSize);
  return index;
}

std::string_view CompactFont::item(const Index &index, std::uint32_t number) const noexcept {
  if (number >= index.count)
    return {};
  const std::size_t at = index.offsets + number * index.offsetSize;
  const std::size_t begin = program_.number(at, index.offsetSize);
  const std::size_t end = program_.number(at + index.offsetSize, index.offsetSize);
  return end > begin ? program_.part(index.data + begin, end - begin) : std::string_view();
}

void CompactFont::readTopDictionary(std::string_view dictionary) {
  const ProgramBytes bytes(dictionary);
  std::uint32_t operand = 0;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::uint32_t first = bytes.byte(at++);
    if (first == 28) {
      operand = bytes.word(at);
      at += 2;
    } else if (first == 29) {
      operand = bytes.longWord(at);
      at += 4;
    } else if (first == 30) {
      while (at < bytes.size() && (bytes.byte(at) & 0xF) != 0xF)
        ++at;
      ++at;
    } else if (first >= 32 && first <= 246) {
      operand = first - 139;
    } else if (first >= 247 && first <= 254) {
      const std::uint32_t second = bytes.byte(at++);
      operand = first <= 250 ? (first - 247) * 256 + second + 108
                             : 0U - (first - 251) * 256 - second - 108;
    } else if (first <= 21) {
      const std::uint32_t operation = first == 12 ? 12 << 8 | bytes.byte(at++) : first;
      if (operation == charsetOperator)
        charset_ = operand;
      else if (operation == encodingOperator)
        encoding_ = operand;
      else if (operation == charStringsOperator)
        charStrings_ = operand;
      else if (operation == registryOperator)
        isCharacterKeyed_ = true;
    }
  }
}

void CompactFont::readCharset(std::uint32_t glyphCount) {
  if (isCharacterKeyed_ || (charset_ != 0 && charset_ < firstOwnCharset))
    return;
  names_.reserve(std::min<std::size_t>(glyphCount, program_.size()));
  names_.push_back(0);
  if (charset_ == 0) {
    for (std::uint32_t i = 1; i < std::min(glyphCount, 229U); ++i)
      names_.push_back(static_cast<std::uint16_t>(i));
    return;
  }
  const std::uint32_t format = program_.byte(charset_);
  std::size_t at = std::size_t{charset_} + 1;
  while (names_.size() < glyphCount && at < program_.size()) {
    std::uint32_t name = program_.word(at);
    at += 2;
    std::uint32_t more = 0;
    if (format == 1)
      more = program_.byte(at++);
    else if (format == 2) {
      more = program_.word(at);
      at += 2;
    }
    for (++more; more > 0 && names_.size() < glyphCount; --more)
      names_.push_back(static_cast<std::uint16_t>(name++));
  }
}

void CompactFont::readEncoding() {
  if (encoding_ < firstOwnEncoding)
    return;
  const std::uint32_t format = program_.byte(encoding_);
  const std::uint32_t count = program_.byte(encoding_ + std::size_t{1});
  std::size_t at = encoding_ + std::size_t{2};
  std::uint16_t glyph = 1;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t code = program_.byte(at++);
    std::uint32_t more = (format & 0x7F) == 1 ? program_.byte(at++) : 0;
    for (++more; more > 0; --more)
      glyphOfCode_[code++ & 0xFF] = glyph++;
  }
}

std::string_view CompactFont::string(std::uint32_t identifier) const noexcept {
  return identifier < compactFontStrings.size()
             ? compactFontStrings[identifier]
             : item(strings_, identifier - static_cast<std::uint32_t>(compactFontStrings.size()));
}

std::string_view CompactFont::glyphName(std::uint32_t glyph) const noexcept {
  return glyph > 0 && glyph < names_.size() ? string(names_[glyph]) : std::string_view();
}

std::string_view CompactFont::nameOfCode(unsigned char code) const noexcept {
  return glyphName(glyphOfCode_[code]);
}

} // namespace searchsystem
