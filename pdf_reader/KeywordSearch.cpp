#include "pdf_reader/KeywordSearch.h"

#include "platform/foundation/StringEncoding.h"

#include <limits>

namespace {

std::size_t mostBytesPerCharacter(unsigned long encoding) noexcept {
  const bool isSingleByte = encoding == static_cast<unsigned long>(StringEncoding::MacRoman) ||
                            encoding == static_cast<unsigned long>(StringEncoding::ISOLatin1);
  return isSingleByte ? 1 : 4;
}

unsigned optionsFor(bool isCaseSensitive) noexcept {
  return isCaseSensitive ? NSLiteralSearch : NSLiteralSearch | NSCaseInsensitiveSearch;
}

} // namespace

KeywordSearch::KeywordSearch(const NSString &keyword, bool isCaseSensitive, unsigned long encoding)
    : pattern_(keyword.view(), optionsFor(isCaseSensitive)),
      overlap_(pattern_.longestOccurrence() * mostBytesPerCharacter(encoding)) {
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
