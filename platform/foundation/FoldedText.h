#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace searchsystem {

/// The code points by which a text is compared.
///
/// Threads: one at a time.
struct FoldedText {
  /// One code point of the folded text.
  struct Unit {
    std::int32_t codePoint;
    /// A match may begin before this unit, and end before it.
    bool isBoundary;
    /// Where this unit's character begins in the source.
    std::size_t source;
  };

  /// A byte that is not UTF-8 becomes this plus its value, which is not a code point.
  static constexpr std::int32_t firstByteUnit = 0x110000;

  /// Folds the case of `text` if `foldCase`. With `decompose`, canonical equivalents become equal,
  /// and no boundary lies inside a composed character. Throws `std::bad_alloc`.
  FoldedText(std::string_view text, bool foldCase, bool decompose);

  /// Whether the character at `position` belongs to the same composed character as the ASCII
  /// character before it.
  [[nodiscard]] static bool continuesCharacterAt(std::string_view text,
                                                 std::size_t position) noexcept;

  /// Whether every ASCII character of the folded text occurs in the text itself.
  [[nodiscard]] static bool holdsItsASCII(std::string_view text) noexcept;

  std::vector<Unit> units;
};

} // namespace searchsystem
