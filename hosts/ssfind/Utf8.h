#pragma once

#include <cstddef>
#include <string_view>

namespace searchsystem::ssfind {

/// The first character of a text, or its first byte where that is not UTF-8.
struct Utf8Character {
  char32_t code;
  std::size_t length;
  bool isValid;
};

/// The text must not be empty.
[[nodiscard]] Utf8Character firstCharacter(std::string_view text) noexcept;

[[nodiscard]] bool isUtf8(std::string_view text) noexcept;

/// Control characters, and those that change the direction of text: on a terminal they could move
/// the cursor, hide text or reorder a name.
[[nodiscard]] bool isControlCharacter(char32_t code) noexcept;

} // namespace searchsystem::ssfind
