#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/TextPattern.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace searchsystem {

/// Looks for a keyword in texts that are given as bytes of an encoding, literally and with or
/// without regard to case. Texts in Mac Japanese are taken for Shift-JIS X0213 when they are not
/// valid in it.
///
/// Threads: one at a time. Throws `std::bad_alloc`.
class KeywordSearch {
public:
  static constexpr std::size_t mostEncodings = 2;

  KeywordSearch(const NSString &keyword, bool isCaseSensitive, unsigned long encoding);

  /// How many encodings a text may be in; it is in the first in which it is valid.
  [[nodiscard]] std::size_t encodingCount() const noexcept { return encodingCount_; }

  /// Whether a text can be searched in pieces, cut where `wholeCharacters` says.
  [[nodiscard]] bool canBeCut() const noexcept { return isSingleByte_ || isShiftJIS_; }

  /// Whether any bytes are valid.
  [[nodiscard]] bool isAlwaysValid() const noexcept { return isAlwaysValid_; }

  /// The size of the shortest beginning of whole characters that has at least `least` bytes, or of
  /// all whole characters. The text has to begin with a character.
  [[nodiscard]] std::size_t
  wholeCharacters(std::string_view text, std::size_t least = std::string_view::npos) const noexcept;

  /// The most bytes that an occurrence takes, in any of the encodings.
  [[nodiscard]] std::size_t overlap() const noexcept { return overlap_; }

  /// Whether the keyword occurs in a text in the encoding of that index; none when the text is not
  /// valid in it.
  [[nodiscard]] std::optional<bool> occursIn(std::string_view text, std::size_t index) const;

private:
  const TextPattern pattern_;
  const bool isAlwaysValid_;
  const bool isSingleByte_;
  const bool isShiftJIS_;
  const std::size_t overlap_;
  std::array<std::uint32_t, mostEncodings> encodings_{};
  std::size_t encodingCount_ = 1;
};

} // namespace searchsystem
