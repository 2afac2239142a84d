#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace searchsystem {

/// The classes of characters (ISO 32000-2, 7.2.3).
class CharacterClass {
public:
  [[nodiscard]] static bool isBlank(char c) noexcept { return (of(c) & blank) != 0; }
  [[nodiscard]] static bool isDelimiter(char c) noexcept { return (of(c) & delimiter) != 0; }
  [[nodiscard]] static bool isRegular(char c) noexcept {
    return (of(c) & (blank | delimiter)) == 0;
  }
  [[nodiscard]] static bool isDigit(char c) noexcept { return (of(c) & digit) != 0; }
  /// What a number is made of: digits, signs, the point.
  [[nodiscard]] static bool isNumeric(char c) noexcept { return (of(c) & numeric) != 0; }
  /// -1 if it is none.
  [[nodiscard]] static int hexDigit(char c) noexcept {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
  }

private:
  static constexpr std::uint8_t blank = 1, delimiter = 2, digit = 4, numeric = 8;

  [[nodiscard]] static std::uint8_t of(char c) noexcept {
    return classes[static_cast<unsigned char>(c)];
  }

  static constexpr std::array<std::uint8_t, 256> classes = [] {
    std::array<std::uint8_t, 256> made{};
    for (const char c : std::string_view("\0\t\n\f\r ", 6))
      made[static_cast<unsigned char>(c)] = blank;
    for (const char c : std::string_view("()<>[]{}/%"))
      made[static_cast<unsigned char>(c)] = delimiter;
    for (const char c : std::string_view("0123456789"))
      made[static_cast<unsigned char>(c)] = digit | numeric;
    for (const char c : std::string_view("+-."))
      made[static_cast<unsigned char>(c)] = numeric;
    return made;
  }();
};

} // namespace searchsystem
