#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
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

/// What stands between the angle brackets.
[[nodiscard]] inline std::string_view digitsOfHexString(std::string_view token) noexcept {
  return token.substr(1, token.size() - 2);
}

/// How many hexadecimal digits there are; whatever else stands between them is no part of the
/// string.
[[nodiscard]] std::size_t countHexDigits(std::string_view digits) noexcept;

/// Decodes two digits to a byte, and a last single one as if 0 followed, until `capacity` bytes are
/// written. Returns how many were.
std::size_t decodeHexDigits(std::string_view digits, char *out, std::size_t capacity) noexcept;

} // namespace searchsystem
