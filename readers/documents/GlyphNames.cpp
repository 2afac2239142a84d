#include "readers/documents/GlyphNames.h"

#include "readers/documents/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace searchsystem {

namespace {

bool parseHex(std::string_view digits, std::uint32_t &value) noexcept {
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  return error == std::errc() && end == digits.data() + digits.size();
}

/// Of the names that have a line there are more than four thousand.
std::string_view listedCodePoints(std::string_view name) noexcept {
  std::size_t begin = 0;
  std::size_t end = glyphList.size() - 1;
  // Both stand on a line end; the line that is looked for stands between them, if there is one.
  while (begin < end) {
    const std::size_t middle = begin + (end - begin) / 2;
    const std::size_t lineBegin = glyphList.rfind('\n', middle);
    const std::size_t lineEnd = glyphList.find('\n', lineBegin + 1);
    const std::string_view line = glyphList.substr(lineBegin + 1, lineEnd - lineBegin - 1);
    const std::size_t separator = line.find(';');
    const int order = line.substr(0, separator).compare(name);
    if (order == 0)
      return line.substr(separator + 1);
    if (order < 0)
      begin = lineEnd;
    else
      end = lineBegin;
  }
  return {};
}

/// The list has letters of special forms in the private area, at their codes as Latin-1 text.
char32_t withoutPrivateForm(std::uint32_t codePoint) noexcept {
  return codePoint >= 0xF720 && codePoint <= 0xF7FF ? codePoint - 0xF700
         : codePoint == 0xF6BE                      ? U'\u0237'
                                                    : codePoint;
}

void appendListed(std::string &text, std::string_view codePoints) {
  while (!codePoints.empty()) {
    const std::size_t length = std::min(codePoints.find(' '), codePoints.size());
    std::uint32_t codePoint = 0;
    if (parseHex(codePoints.substr(0, length), codePoint))
      appendUtf8(text, withoutPrivateForm(codePoint));
    codePoints.remove_prefix(std::min(length + 1, codePoints.size()));
  }
}

/// The name of one character: `eacute`, `uni00E900E8`, `u1F600`.
void appendComponent(std::string &text, std::string_view name) {
  if (const std::string_view listed = listedCodePoints(name); !listed.empty())
    return appendListed(text, listed);
  std::uint32_t codePoint = 0;
  if (name.starts_with("uni") && name.size() >= 7 && name.size() % 4 == 3) {
    std::string units;
    for (std::size_t i = 3; i < name.size(); i += 4) {
      if (!parseHex(name.substr(i, 4), codePoint))
        return;
      units += static_cast<char>(codePoint >> 8);
      units += static_cast<char>(codePoint & 0xFF);
    }
    appendUtf16(text, units);
  } else if (name.starts_with('u') && name.size() >= 5 && name.size() <= 7 &&
             parseHex(name.substr(1), codePoint)) {
    appendUtf8(text, codePoint);
  }
}

} // namespace

void appendGlyphName(std::string &text, std::string_view name) {
  constexpr std::size_t longest = 200;
  name = name.substr(0, std::min(name.find('.'), longest));
  while (!name.empty()) {
    const std::size_t length = std::min(name.find('_'), name.size());
    appendComponent(text, name.substr(0, length));
    name.remove_prefix(std::min(length + 1, name.size()));
  }
}

} // namespace searchsystem
