#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/TextPattern.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Looks for a keyword in texts that are given as bytes of an encoding, literally and with or
/// without regard to case. Texts in Mac Japanese are taken for Shift-JIS X0213 when they are not
/// valid in it.
///
/// Threads: one at a time. Throws `std::bad_alloc`.
class KeywordSearch {
public:
  KeywordSearch(const NSString &keyword, bool isCaseSensitive, unsigned long encoding);

  /// How many encodings a text may be in; the first that it is valid in is the one.
  [[nodiscard]] std::size_t encodingCount() const noexcept { return encodingCount_; }

  /// Whether any text is converted piece by piece as it is whole, as long as no character is cut.
  [[nodiscard]] bool isStateless() const noexcept;

  /// Bytes of text in which any occurrence ends that begins before them, whatever the encoding.
  [[nodiscard]] std::size_t overlap() const noexcept { return overlap_; }

  /// A text as UTF-8, from the encoding of that index; none when it is not valid in it.
  [[nodiscard]] std::optional<std::string> convert(std::string_view bytes, std::size_t index) const;

  [[nodiscard]] bool occursIn(std::string_view text) const {
    return pattern_.find(text).length != 0;
  }

private:
  const TextPattern pattern_;
  const std::size_t overlap_;
  std::array<std::uint32_t, 2> encodings_{};
  std::size_t encodingCount_ = 1;
};
