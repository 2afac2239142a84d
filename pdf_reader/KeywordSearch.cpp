#include "pdf_reader/KeywordSearch.h"

#include "platform/foundation/StringEncoding.h"

#include <limits>

namespace {

// A character of the keyword becomes three at most when its case is folded, and the longest
// character of an encoding has four bytes.
constexpr std::size_t mostBytesPerByte = 12;

unsigned optionsFor(bool isCaseSensitive) noexcept {
  return isCaseSensitive ? NSLiteralSearch : NSLiteralSearch | NSCaseInsensitiveSearch;
}

} // namespace

KeywordSearch::KeywordSearch(const NSString &keyword, bool isCaseSensitive, unsigned long encoding)
    : pattern_(keyword.view(), optionsFor(isCaseSensitive)),
      overlap_(keyword.length() * mostBytesPerByte) {
  if (encoding > std::numeric_limits<std::uint32_t>::max()) {
    encodingCount_ = 0;
    return;
  }
  encodings_[0] = static_cast<std::uint32_t>(encoding);
  if (static_cast<StringEncoding>(encodings_[0]) == StringEncoding::MacJapanese)
    encodings_[encodingCount_++] = static_cast<std::uint32_t>(StringEncoding::ShiftJIS_X0213);
}

bool KeywordSearch::isStateless() const noexcept {
  switch (static_cast<StringEncoding>(encodings_[0])) {
  case StringEncoding::UTF16:
  case StringEncoding::ISO2022JP:
    return false;
  default:
    return true;
  }
}

std::optional<std::string> KeywordSearch::convert(std::string_view bytes, std::size_t index) const {
  return decodeText(bytes, encodings_[index]);
}
