#pragma once

#include "platform/foundation/NSRange.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace searchsystem {

/// A text prepared for searching many others.
///
/// Without `NSLiteralSearch` canonically equivalent texts are equal (a composed and a decomposed
/// é), and nothing is found inside a composed character. With it, code points are compared.
/// `NSCaseInsensitiveSearch` folds case by Unicode's full default folding, without a locale, so
/// that ß meets ss; a match covers whole characters of the text that is searched. Bytes that are
/// not UTF-8 equal themselves only.
///
/// A search is linear in the text. ASCII takes a fast path.
/// Ownership: keeps no reference to its source. Threads: any; immutable.
class TextPattern {
public:
  /// Throws `std::bad_alloc`.
  TextPattern(std::string_view text, unsigned options);

  /// Where the text first occurs; length 0 if it does not occur or is empty.
  /// Throws `std::bad_alloc` when `text` is not ASCII, else nothing.
  [[nodiscard]] NSRange find(std::string_view text) const;

  /// Whether it is ASCII after folding. If not, it does not occur in an ASCII text.
  [[nodiscard]] bool isASCII() const noexcept { return isASCII_; }

  /// Where the bytes of an ASCII pattern first occur; length 0 if they do not. This is `find` in
  /// any text that `FoldedText::holdsItsASCII`, and in every text if `isFoundByBytes`; also in such
  /// texts one behind the other with NULs between them, if the pattern holds none.
  [[nodiscard]] bool isFoundByBytes() const noexcept { return isFoundByBytes_; }
  [[nodiscard]] NSRange findBytes(std::string_view text) const noexcept;

  /// The most code points that an occurrence takes.
  [[nodiscard]] std::size_t longestOccurrence() const noexcept { return units_.size(); }

private:
  [[nodiscard]] std::size_t findCandidate(std::string_view text) const noexcept;
  [[nodiscard]] NSRange findFolded(std::string_view text) const;

  const unsigned options_;
  /// The text's code points, folded as the options ask.
  std::vector<std::int32_t> units_;
  bool isASCII_;
  bool isFoundByBytes_;
  /// For each length of a matched beginning, the length of the next shorter one (Knuth, Morris
  /// and Pratt).
  std::vector<std::uint32_t> fallback_;
};

} // namespace searchsystem
