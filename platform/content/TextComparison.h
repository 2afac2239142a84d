#pragma once

#include "platform/content/TextFolding.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Looks for a keyword in a text that arrives in pieces, as `ReaderProtocol.h` describes it.
///
/// Keyword and text are compared after compatibility normalisation (a ligature is its letters) and,
/// unless told to be distinct, full case folding (ß is ss). Soft hyphens count for nothing; any run
/// of white space is one blank, the end of a page among it; a hyphen at the end of a line is a
/// hyphen or nothing. So words and phrases are found across lines and pages.
///
/// Time is linear in the text, whatever it holds and however it is divided. Not thread-safe.
class TextComparison {
public:
  /// Throws `std::bad_alloc`.
  TextComparison(std::string_view keyword, bool isDistinct);

  /// Whether nothing of the keyword is left to look for: it is then never found.
  [[nodiscard]] bool isEmpty() const noexcept { return keyword_.empty(); }

  /// The keyword as it is compared; in UTF-8.
  [[nodiscard]] const std::string &keyword() const noexcept { return keyword_; }

  /// Takes the next piece of the text; whether the keyword has been found in it, or reaches from
  /// earlier pieces into it. Throws `std::bad_alloc`.
  [[nodiscard]] bool take(std::string_view piece);

  /// Forgets the text, for another.
  void restart() noexcept;

private:
  /// For each byte, at which places of the keyword it stands; as one bit a place.
  using Places = std::vector<std::uint64_t>;

  [[nodiscard]] bool findPlainly();
  [[nodiscard]] bool findWithHyphens();
  void step(Places &places, unsigned char byte) const noexcept;

  /// As the text is compared; in UTF-8.
  std::string keyword_;
  /// Only then it matters that a hyphen at the end of a line may be meant.
  const bool hasHyphen_;

  TextFolding folding_;
  /// What of the text has yet to be compared.
  std::string text_;
  /// For a keyword with hyphens: which beginnings of the keyword the text ends in at present.
  Places matched_;
  Places placesOfByte_;
};

} // namespace searchsystem
