#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace searchsystem {

inline constexpr std::uint8_t noHexDigit = 0xFF;

inline constexpr std::array<std::uint8_t, 256> hexDigitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(noHexDigit);
  for (unsigned i = 0; i < 10; ++i)
    values['0' + i] = static_cast<std::uint8_t>(i);
  for (unsigned i = 0; i < 6; ++i)
    values['A' + i] = values['a' + i] = static_cast<std::uint8_t>(10 + i);
  return values;
}();

[[nodiscard]] inline std::uint8_t hexDigitValue(char c) noexcept {
  return hexDigitValues[static_cast<unsigned char>(c)];
}

/// Whether a token is a hexadecimal string object: `<48656C6C6F>` (PDF standard, 7.3.4.3).
[[nodiscard]] inline bool isHexString(std::string_view token) noexcept {
  return token.size() >= 2 && token.front() == '<' && token.back() == '>';
}

/// The text between the angle brackets.
[[nodiscard]] inline std::string_view digitsOfHexString(std::string_view token) noexcept {
  return token.substr(1, token.size() - 2);
}

/// Decodes two digits to a byte, a last single one as if 0 followed, and skips other bytes. Writes
/// at most `capacity` bytes and returns their number.
std::size_t decodeHexDigits(std::string_view digits, char *out, std::size_t capacity) noexcept;

/// The size of a text up to its first NUL.
[[nodiscard]] inline std::size_t sizeBeforeNUL(const char *text, std::size_t size) noexcept {
  const void *const end = std::memchr(text, 0, size);
  return end == nullptr ? size : static_cast<std::size_t>(static_cast<const char *>(end) - text);
}

} // namespace searchsystem
