#include "platform/content/TextFolding.h"

#include "platform/foundation/ASCIIText.h"
#include "readers/ReaderProtocol.h"

#include <algorithm>
#include <array>
#include <utf8proc.h>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::size_t longestCharacter = 4;

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

void appendFolded(std::string &result, std::string_view text) {
  while (!text.empty()) {
    const std::size_t ascii = lengthOfASCIIRun(text);
    appendLowered(result, text.substr(0, ascii));
    text.remove_prefix(ascii);
    while (!text.empty() && static_cast<unsigned char>(text.front()) >= 0x80) {
      const char byte = text.front();
      if (const std::int32_t codePoint = TextFolding::takeCodePoint(text); codePoint >= 0)
        TextFolding::appendFoldedCodePoint(result, codePoint);
      else
        result.push_back(byte);
    }
  }
}

} // namespace

std::int32_t TextFolding::takeCodePoint(std::string_view &text) noexcept {
  utf8proc_int32_t codePoint = -1;
  const utf8proc_ssize_t length =
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t *>(text.data()),
                       static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
  text.remove_prefix(static_cast<std::size_t>(std::max<utf8proc_ssize_t>(length, 1)));
  return length > 0 ? codePoint : -1;
}

void TextFolding::appendCodePoint(std::string &text, std::int32_t codePoint) {
  std::array<utf8proc_uint8_t, longestCharacter> bytes{};
  const auto size = utf8proc_encode_char(codePoint, bytes.data());
  text.append(reinterpret_cast<const char *>(bytes.data()), static_cast<std::size_t>(size));
}

void TextFolding::appendFoldedCodePoint(std::string &text, std::int32_t codePoint) {
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

void TextFolding::restart() noexcept {
  cutCharacter_.clear();
  dropsBlanks_ = isAfterBlank_ = false;
}

void TextFolding::append(std::string_view piece, std::string &text) {
  std::string joined;
  if (!cutCharacter_.empty()) {
    joined = std::move(cutCharacter_).append(piece);
    piece = joined;
  }
  const std::size_t cut = isDistinct_ ? 0 : lengthOfCutCharacter(piece);
  cutCharacter_ = piece.substr(piece.size() - cut);
  appendLines(piece.substr(0, piece.size() - cut), text);
}

void TextFolding::appendLines(std::string_view piece, std::string &text) {
  constexpr std::string_view marks{"\x01\x0C", 2};
  static_assert(marks[0] == lineEndHyphen && marks[1] == pageEnd);
  std::size_t start = 0, hyphen = piece.find(marks[0]), page = piece.find(marks[1]);
  while (true) {
    const std::size_t mark = std::min(hyphen, page);
    appendPlain(piece.substr(start, mark - start), text);
    if (mark == std::string_view::npos)
      return;
    start = mark + 1;
    if (mark == page) {
      page = piece.find(marks[1], start);
      if (!dropsBlanks_ && !isAfterBlank_)
        text.push_back(' ');
    } else {
      hyphen = piece.find(marks[0], start);
      if (keepsHyphens_)
        text.push_back(lineEndHyphen);
    }
    dropsBlanks_ = true;
  }
}

void TextFolding::appendPlain(std::string_view piece, std::string &text) {
  if (dropsBlanks_) {
    piece.remove_prefix(std::min(piece.find_first_not_of(' '), piece.size()));
    dropsBlanks_ = piece.empty();
  }
  if (piece.empty())
    return;
  isAfterBlank_ = piece.back() == ' ';
  if (isDistinct_)
    text.append(piece);
  else
    appendFolded(text, piece);
}

} // namespace searchsystem
