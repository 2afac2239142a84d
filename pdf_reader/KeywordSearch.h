#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/TextPattern.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace searchsystem {

/// Looks for a keyword, literally, in texts of an encoding. Texts that are not valid Mac Japanese
/// are tried as Shift-JIS X0213.
///
/// Threads: one at a time. Throws `std::bad_alloc`.
class KeywordSearch {
public:
  static constexpr std::size_t mostEncodings = 2;

  KeywordSearch(const NSString &keyword, bool isCaseSensitive, unsigned long encoding);

  /// How many encodings to try: a text is in the first in which it is valid.
  [[nodiscard]] std::size_t encodingCount() const noexcept { return encodingCount_; }

  /// Whether a text can be searched in pieces, cut where `wholeCharacters` says.
  [[nodiscard]] bool canBeCut() const noexcept { return isSingleByte_ || isShiftJIS_; }

  /// Whether all texts are valid.
  [[nodiscard]] bool isAlwaysValid() const noexcept { return isAlwaysValid_; }

  /// The size of the fewest whole characters that have at least `least` bytes, or of all. The text
  /// must begin with a whole character.
  [[nodiscard]] std::size_t
  wholeCharacters(std::string_view text, std::size_t least = std::string_view::npos) const noexcept;

  /// The largest size of an occurrence in bytes, in any encoding.
  [[nodiscard]] std::size_t overlap() const noexcept { return overlap_; }

  /// Whether the keyword occurs in a text in the encoding of that index; none if the text is not
  /// valid.
  [[nodiscard]] std::optional<bool> occursIn(std::string_view text, std::size_t index) const;

private:
  const TextPattern pattern_;
  const bool isAlwaysValid_;
  const bool isSingleByte_;
  const bool isShiftJIS_;
  /// Whether the keyword occurs in ASCII bytes as in the text that they are decoded to.
  const bool isSameInASCII_;
  const std::size_t overlap_;
  std::array<std::uint32_t, mostEncodings> encodings_{};
  std::size_t encodingCount_ = 1;
};

} // namespace searchsystem
