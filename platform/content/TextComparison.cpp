#include "platform/content/TextComparison.h"

#include "readers/ComparedCharacters.h"
#include "readers/ReaderProtocol.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utf8proc.h>

namespace searchsystem {

namespace {

/// U+2010, what normalisation makes of other hyphens.
constexpr std::string_view properHyphen = "\xE2\x80\x90";

/// The text after compatibility normalisation.
std::string normalised(std::string_view text) {
  utf8proc_uint8_t *result = nullptr;
  const auto size = utf8proc_map(
      reinterpret_cast<const utf8proc_uint8_t *>(text.data()),
      static_cast<utf8proc_ssize_t>(text.size()), &result,
      static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_COMPAT));
  const std::unique_ptr<void, decltype(&std::free)> owned(result, std::free);
  if (size == UTF8PROC_ERROR_NOMEM)
    throw std::bad_alloc();
  if (size < 0)
    return {};
  return {reinterpret_cast<const char *>(result), static_cast<std::size_t>(size)};
}

/// Without what counts for nothing, and with white space as blanks; empty when it is not UTF-8,
/// which no text equals.
std::string cleaned(std::string_view keyword) {
  std::string result;
  while (!keyword.empty()) {
    const std::int32_t codePoint = TextFolding::takeCodePoint(keyword);
    if (codePoint < 0)
      return {};
    const auto c = static_cast<char32_t>(codePoint);
    if (isWhiteSpace(c))
      result.push_back(' ');
    else if (c != softHyphen && !isDropped(c))
      TextFolding::appendCodePoint(result, codePoint);
  }
  return result;
}

/// The keyword as it is compared.
std::string comparable(std::string_view keyword, bool isDistinct) {
  const std::string whole = normalised(cleaned(keyword));
  std::string result;
  for (std::string_view text = whole; !text.empty();) {
    const std::int32_t codePoint = TextFolding::takeCodePoint(text);
    if (codePoint == ' ') {
      // Normalisation makes blanks, too.
      if (!result.ends_with(' '))
        result.push_back(' ');
    } else if (isDistinct) {
      TextFolding::appendCodePoint(result, codePoint);
    } else {
      TextFolding::appendFoldedCodePoint(result, codePoint);
    }
  }
  return result;
}

constexpr std::size_t bitsPerWord = 64;

} // namespace

TextComparison::TextComparison(std::string_view keyword, bool isDistinct)
    : keyword_(comparable(keyword, isDistinct)),
      hasHyphen_(keyword_.find('-') != std::string::npos ||
                 keyword_.find(properHyphen) != std::string::npos),
      folding_(isDistinct, hasHyphen_) {
  if (!hasHyphen_)
    return;
  const std::size_t words = keyword_.size() / bitsPerWord + 1;
  matched_.resize(words);
  placesOfByte_.resize(words << 8);
  for (std::size_t i = 0; i < keyword_.size(); ++i)
    placesOfByte_[static_cast<unsigned char>(keyword_[i]) * words + i / bitsPerWord] |=
        std::uint64_t{1} << i % bitsPerWord;
}

void TextComparison::restart() noexcept {
  folding_.restart();
  text_.clear();
  std::ranges::fill(matched_, 0);
}

bool TextComparison::take(std::string_view piece) {
  if (isEmpty())
    return false;
  folding_.append(piece, text_);
  return hasHyphen_ ? findWithHyphens() : findPlainly();
}

bool TextComparison::findPlainly() {
  const bool isFound =
      memmem(text_.data(), text_.size(), keyword_.data(), keyword_.size()) != nullptr;
  const std::size_t kept = std::min(text_.size(), keyword_.size() - 1);
  text_.erase(0, text_.size() - kept);
  return isFound;
}

/// Each bit of `matched_` says that the text read so far ends in so long a beginning of the
/// keyword: as many may do so at once as there are ways to read the hyphens (Baeza-Yates and
/// Gonnet).
bool TextComparison::findWithHyphens() {
  const std::size_t last = keyword_.size() - 1;
  Places asHyphen(matched_.size());
  Places asProperHyphen(matched_.size());
  for (const char c : text_) {
    if (c != lineEndHyphen) {
      step(matched_, static_cast<unsigned char>(c));
    } else {
      asHyphen = matched_;
      asProperHyphen = matched_;
      step(asHyphen, '-');
      for (const char byte : properHyphen)
        step(asProperHyphen, static_cast<unsigned char>(byte));
      for (std::size_t i = 0; i < matched_.size(); ++i)
        matched_[i] |= asHyphen[i] | asProperHyphen[i];
    }
    if ((matched_[last / bitsPerWord] >> last % bitsPerWord & 1) != 0)
      return true;
  }
  text_.clear();
  return false;
}

void TextComparison::step(Places &places, unsigned char byte) const noexcept {
  const std::size_t words = places.size();
  const std::uint64_t *const allowed = placesOfByte_.data() + byte * words;
  std::uint64_t carried = 1;
  for (std::size_t i = 0; i < words; ++i) {
    const std::uint64_t next = places[i] >> (bitsPerWord - 1);
    places[i] = (places[i] << 1 | carried) & allowed[i];
    carried = next;
  }
}

} // namespace searchsystem
