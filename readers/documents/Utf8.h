#pragma once

#include <bit>
#include <cstddef>
#include <string>
#include <string_view>

namespace searchsystem {

/// Nothing is appended for what is no code point: a half of a pair, or beyond the last one.
inline void appendUtf8(std::string &text, char32_t character) {
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    text += static_cast<char>(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    if (character >= 0xD800 && character < 0xE000)
      return;
    text += static_cast<char>(0xE0 | character >> 12);
    text += static_cast<char>(0x80 | (character >> 6 & 0x3F));
    text += static_cast<char>(0x80 | (character & 0x3F));
  } else if (character < 0x110000) {
    text += static_cast<char>(0xF0 | character >> 18);
    text += static_cast<char>(0x80 | (character >> 12 & 0x3F));
    text += static_cast<char>(0x80 | (character >> 6 & 0x3F));
    text += static_cast<char>(0x80 | (character & 0x3F));
  }
}

/// Takes the next code point of text that is UTF-8, which is not checked, and not at its end.
inline char32_t takeUtf8(std::string_view text, std::size_t &position) noexcept {
  const auto byte = [&](std::size_t i) -> char32_t {
    return position + i < text.size() ? static_cast<unsigned char>(text[position + i]) : 0;
  };
  const char32_t first = byte(0);
  char32_t character = first;
  std::size_t length = 1;
  if (first >= 0xF0) {
    character =
        (first & 0x07) << 18 | (byte(1) & 0x3F) << 12 | (byte(2) & 0x3F) << 6 | (byte(3) & 0x3F);
    length = 4;
  } else if (first >= 0xE0) {
    character = (first & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
    length = 3;
  } else if (first >= 0xC0) {
    character = (first & 0x1F) << 6 | (byte(1) & 0x3F);
    length = 2;
  }
  position += length < text.size() - position ? length : text.size() - position;
  return character;
}

/// Appends text of UTF-16; a last odd byte and lone halves are passed over.
void appendUtf16(std::string &text, std::string_view bytes, std::endian order = std::endian::big);

/// The characters of a text string of a document (ISO 32000-2, 7.9.2.2): UTF-16 or UTF-8 with its
/// mark, else the encoding for such strings.
[[nodiscard]] std::string textStringToUtf8(std::string_view bytes);

} // namespace searchsystem
