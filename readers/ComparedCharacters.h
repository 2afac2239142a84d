#pragma once

/// Which characters count for nothing, and which for a blank, where a keyword is compared with a
/// text: the same for the reader that gives the text and for the library that has the keyword. Both
/// treat the characters so before they normalise what is left.
namespace searchsystem {

constexpr bool isBetween(char32_t c, char32_t first, char32_t last) noexcept {
  return c >= first && c <= last;
}

/// Unicode's property White_Space. Each run is one blank.
constexpr bool isWhiteSpace(char32_t c) noexcept {
  return isBetween(c, 0x09, 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         isBetween(c, 0x2000, 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

/// Neither seen nor typed: controls, marks of order and of direction, what is no character. White
/// space is looked for first.
constexpr bool isDropped(char32_t c) noexcept {
  return c < 0x20 || isBetween(c, 0x7F, 0x9F) || c == 0x61C || c == 0x200B || c == 0x200E ||
         c == 0x200F || isBetween(c, 0x202A, 0x202E) || isBetween(c, 0x2060, 0x206F) ||
         c == 0xFEFF || isBetween(c, 0xFFF0, 0xFFFF) || isBetween(c, 0xE0000, 0xE007F) ||
         (c & 0xFFFE) == 0xFFFE;
}

/// Dropped as well, but where it ends a line.
constexpr char32_t softHyphen = 0xAD;

} // namespace searchsystem
