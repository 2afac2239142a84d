#include "platform/content/TextComparison.h"

#include "platform/foundation/ASCIIText.h"
#include "readers/ComparedCharacters.h"
#include "readers/ReaderProtocol.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utf8proc.h>

namespace searchsystem {

namespace {

constexpr std::size_t longestCharacter = 4;
/// U+2010, what normalisation makes of other hyphens.
constexpr std::string_view properHyphen = "\xE2\x80\x90";

void appendCodePoint(std::string &text, utf8proc_int32_t codePoint) {
  std::array<utf8proc_uint8_t, longestCharacter> bytes{};
  const auto size = utf8proc_encode_char(codePoint, bytes.data());
  text.append(reinterpret_cast<const char *>(bytes.data()), static_cast<std::size_t>(size));
}

/// Appends `codePoint` with its case folded. Normalised text is folded character by character.
void appendFoldedCodePoint(std::string &text, utf8proc_int32_t codePoint) {
  constexpr std::uint16_t foldsToItself = UINT16_MAX;
  if (utf8proc_get_property(codePoint)->casefold_seqindex == foldsToItself) {
    appendCodePoint(text, codePoint);
    return;
  }
  std::array<utf8proc_int32_t, 8> folded{};
  int boundClass = 0;
  const auto count = utf8proc_decompose_char(codePoint, folded.data(), folded.size(),
                                             UTF8PROC_CASEFOLD, &boundClass);
  for (utf8proc_ssize_t i = 0; i < count; ++i)
    appendCodePoint(text, folded[static_cast<std::size_t>(i)]);
}

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

/// Takes the next character off `text`; -1 for what is not UTF-8.
utf8proc_int32_t takeCodePoint(std::string_view &text) noexcept {
  utf8proc_int32_t codePoint = -1;
  const utf8proc_ssize_t length =
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t *>(text.data()),
                       static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
  text.remove_prefix(static_cast<std::size_t>(std::max<utf8proc_ssize_t>(length, 1)));
  return length > 0 ? codePoint : -1;
}

/// Without what counts for nothing, and with white space as blanks; empty when it is not UTF-8,
/// which no text equals.
std::string cleaned(std::string_view keyword) {
  std::string result;
  while (!keyword.empty()) {
    const utf8proc_int32_t codePoint = takeCodePoint(keyword);
    if (codePoint < 0)
      return {};
    const auto c = static_cast<char32_t>(codePoint);
    if (isWhiteSpace(c))
      result.push_back(' ');
    else if (c != softHyphen && !isDropped(c))
      appendCodePoint(result, codePoint);
  }
  return result;
}

/// The keyword as it is compared.
std::string comparable(std::string_view keyword, bool isDistinct) {
  const std::string whole = normalised(cleaned(keyword));
  std::string result;
  for (std::string_view text = whole; !text.empty();) {
    const utf8proc_int32_t codePoint = takeCodePoint(text);
    if (codePoint == ' ') {
      // Normalisation makes blanks, too.
      if (!result.ends_with(' '))
        result.push_back(' ');
    } else if (isDistinct) {
      appendCodePoint(result, codePoint);
    } else {
      appendFoldedCodePoint(result, codePoint);
    }
  }
  return result;
}

/// How many bytes at the end of `text` begin a character that does not end there.
std::size_t lengthOfCutCharacter(std::string_view text) noexcept {
  const std::size_t most = std::min(text.size(), longestCharacter - 1);
  for (std::size_t i = 1; i <= most; ++i) {
    const auto byte = static_cast<unsigned char>(text[text.size() - i]);
    if (byte < 0x80)
      return 0;
    if (byte >= 0xC0) {
      const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
      return length > i ? i : 0;
    }
  }
  return 0;
}

void appendLowered(std::string &text, std::string_view ascii) {
  const std::size_t start = text.size();
  text.append(ascii);
  for (std::size_t i = start; i < text.size(); ++i) {
    const char c = text[i];
    text[i] = static_cast<char>(c | ((c >= 'A' && c <= 'Z') ? 0x20 : 0));
  }
}

constexpr std::size_t bitsPerWord = 64;

} // namespace

TextComparison::TextComparison(std::string_view keyword, bool isDistinct)
    : keyword_(comparable(keyword, isDistinct)), isDistinct_(isDistinct),
      hasHyphen_(keyword_.find('-') != std::string::npos ||
                 keyword_.find(properHyphen) != std::string::npos) {
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
  text_.clear();
  cutCharacter_.clear();
  dropsBlanks_ = isAfterBlank_ = false;
  std::ranges::fill(matched_, 0);
}

bool TextComparison::take(std::string_view piece) {
  if (isEmpty())
    return false;
  std::string joined;
  if (!cutCharacter_.empty()) {
    joined = std::move(cutCharacter_).append(piece);
    piece = joined;
  }
  const std::size_t cut = isDistinct_ ? 0 : lengthOfCutCharacter(piece);
  cutCharacter_ = piece.substr(piece.size() - cut);
  append(piece.substr(0, piece.size() - cut));
  return hasHyphen_ ? findWithHyphens() : findPlainly();
}

void TextComparison::append(std::string_view piece) {
  constexpr std::string_view marks{"\x01\x0C", 2};
  static_assert(marks[0] == lineEndHyphen && marks[1] == pageEnd);
  std::size_t start = 0, hyphen = piece.find(marks[0]), page = piece.find(marks[1]);
  while (true) {
    const std::size_t mark = std::min(hyphen, page);
    appendPlain(piece.substr(start, mark - start));
    if (mark == std::string_view::npos)
      return;
    start = mark + 1;
    if (mark == page) {
      page = piece.find(marks[1], start);
      appendBlank();
    } else {
      hyphen = piece.find(marks[0], start);
      if (hasHyphen_)
        text_.push_back(lineEndHyphen);
    }
    dropsBlanks_ = true;
  }
}

void TextComparison::appendPlain(std::string_view piece) {
  if (dropsBlanks_) {
    piece.remove_prefix(std::min(piece.find_first_not_of(' '), piece.size()));
    dropsBlanks_ = piece.empty();
  }
  if (piece.empty())
    return;
  isAfterBlank_ = piece.back() == ' ';
  if (isDistinct_)
    text_.append(piece);
  else
    appendFolded(piece);
}

void TextComparison::appendBlank() {
  if (!dropsBlanks_ && !isAfterBlank_)
    text_.push_back(' ');
}

void TextComparison::appendFolded(std::string_view text) {
  while (!text.empty()) {
    const std::size_t ascii = lengthOfASCIIRun(text);
    appendLowered(text_, text.substr(0, ascii));
    text.remove_prefix(ascii);
    while (!text.empty() && static_cast<unsigned char>(text.front()) >= 0x80) {
      const char byte = text.front();
      if (const utf8proc_int32_t codePoint = takeCodePoint(text); codePoint >= 0)
        appendFoldedCodePoint(text_, codePoint);
      else
        text_.push_back(byte);
    }
  }
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
