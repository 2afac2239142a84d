#include "pdf_reader/KeywordSearch.h"

#include "platform/foundation/ASCIIText.h"
#include "platform/foundation/StringEncoding.h"

#include <algorithm>
#include <limits>

namespace searchsystem {

namespace {

bool isAnyOf(unsigned long encoding, std::initializer_list<StringEncoding> encodings) noexcept {
  return std::any_of(encodings.begin(), encodings.end(), [encoding](StringEncoding one) {
    return encoding == static_cast<unsigned long>(one);
  });
}

unsigned optionsFor(bool isCaseSensitive) noexcept {
  return isCaseSensitive ? NSLiteralSearch : NSLiteralSearch | NSCaseInsensitiveSearch;
}

/// Whether a byte is the first of two in Shift-JIS or Mac Japanese.
bool isLead(char c) noexcept {
  const auto byte = static_cast<unsigned char>(c);
  return (byte > 0x80 && byte < 0xA0) || (byte >= 0xE0 && byte < 0xFD);
}

} // namespace

KeywordSearch::KeywordSearch(const NSString &keyword, bool isCaseSensitive, unsigned long encoding)
    : pattern_(keyword.view(), optionsFor(isCaseSensitive)),
      isAlwaysValid_(isAnyOf(encoding, {StringEncoding::MacRoman, StringEncoding::ISOLatin1})),
      isSingleByte_(isAlwaysValid_ || isAnyOf(encoding, {StringEncoding::ASCII})),
      isShiftJIS_(isAnyOf(encoding, {StringEncoding::MacJapanese, StringEncoding::ShiftJIS_X0213})),
      isSameInASCII_(isSingleByte_ || (isASCII(keyword.view()) &&
                                       keyword.view().find('\\') == std::string_view::npos)),
      overlap_(pattern_.longestOccurrence() * (isSingleByte_ ? 1 : 4)) {
  if (encoding > std::numeric_limits<std::uint32_t>::max()) {
    encodingCount_ = 0;
    return;
  }
  encodings_[0] = static_cast<std::uint32_t>(encoding);
  if (static_cast<StringEncoding>(encodings_[0]) == StringEncoding::MacJapanese)
    encodings_[encodingCount_++] = static_cast<std::uint32_t>(StringEncoding::ShiftJIS_X0213);
}

std::size_t KeywordSearch::wholeCharacters(std::string_view text,
                                           std::size_t least) const noexcept {
  if (isSingleByte_)
    return std::min(text.size(), least);
  std::size_t size = 0;
  while (size < text.size() && size < least) {
    if (const std::size_t run = lengthOfASCIIRun(text.substr(size, least - size)); run != 0) {
      size += run;
      continue;
    }
    const std::size_t next = size + (isLead(text[size]) ? 2 : 1);
    if (next > text.size())
      break;
    size = next;
  }
  return size;
}

std::optional<bool> KeywordSearch::occursIn(std::string_view text, std::size_t index) const {
  // Most texts are ASCII, which is the same in encodings that can be cut, but for a backslash.
  if (canBeCut() && isASCII(text) && (isSameInASCII_ || text.find('\\') == std::string_view::npos))
    return pattern_.isASCII() && pattern_.findBytes(text).length != 0;
  const auto converted = decodeText(text, encodings_[index]);
  if (!converted)
    return std::nullopt;
  return pattern_.find(*converted).length != 0;
}

} // namespace searchsystem
