#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/TextPattern.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// Looks for a keyword in texts that are given as bytes of an encoding, literally and with or
/// without regard to case. Texts in Mac Japanese are taken for Shift-JIS X0213 when they are not
/// valid in it.
///
/// Threads: one at a time. Throws `std::bad_alloc`.
class KeywordSearch {
public:
  static constexpr std::size_t mostEncodings = 2;

  KeywordSearch(const NSString &keyword, bool isCaseSensitive, unsigned long encoding);

  /// How many encodings a text may be in; the first that it is valid in is the one.
  [[nodiscard]] std::size_t encodingCount() const noexcept { return encodingCount_; }

  /// Whether a text may be cut between any two characters and searched in pieces, and
  /// `wholeCharacters` tells where.
  [[nodiscard]] bool canBeCut() const noexcept { return isSingleByte_ || isShiftJIS_; }

  /// Whether any bytes are valid.
  [[nodiscard]] bool isAlwaysValid() const noexcept { return isAlwaysValid_; }

  /// How many bytes of a text are whole characters, at least `least` if there are so many; by
  /// default all but a last one that is cut. The text has to begin with a character.
  [[nodiscard]] std::size_t
  wholeCharacters(std::string_view text, std::size_t least = std::string_view::npos) const noexcept;

  /// Bytes of text in which any occurrence ends that begins before them, whatever the encoding.
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
