#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// A text as the sequence of code points by which it is compared.
///
/// Threads: one thread at a time.
struct FoldedText {
  /// One code point of the folded text.
  struct Unit {
    std::int32_t codePoint;
    /// A match may begin before this unit, and end before it.
    bool isBoundary;
    /// Where in the source the character begins that this unit comes from.
    std::size_t source;
  };

  /// A byte that is not UTF-8 becomes this plus its value, which no character has.
  static constexpr std::int32_t firstByteUnit = 0x110000;

  /// Folds `text`: its case if `foldCase`; canonical equivalents become equal if `decompose`, and
  /// then no boundary lies inside a composed character. Throws `std::bad_alloc`.
  FoldedText(std::string_view text, bool foldCase, bool decompose);

  /// Whether what stands at `position` of a text belongs to the same composed character as the
  /// ASCII character before it.
  [[nodiscard]] static bool continuesCharacterAt(std::string_view text,
                                                 std::size_t position) noexcept;

  /// Whether every ASCII character that the folded text holds stands in the text itself.
  [[nodiscard]] static bool holdsItsASCII(std::string_view text) noexcept;

  std::vector<Unit> units;
};
