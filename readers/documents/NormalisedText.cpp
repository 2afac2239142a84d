#include "readers/documents/NormalisedText.h"

#include "readers/ComparedCharacters.h"
#include "readers/documents/Utf8.h"

#include <utf8proc.h>

#include <cstddef>
#include <vector>

namespace searchsystem {

namespace {

/// Scripts whose characters are the same under NFKC whatever stands beside them. There are more.
bool isInert(char32_t c) noexcept {
  return c < 0x300 || isBetween(c, 0x370, 0x482) || isBetween(c, 0x48A, 0x55F) ||
         isBetween(c, 0x2010, 0x205E) || isBetween(c, 0x2100, 0x2BFF) ||
         isBetween(c, 0x3001, 0x3029) || isBetween(c, 0x3041, 0x3096) ||
         isBetween(c, 0x30A1, 0xA66E) || isBetween(c, 0xAC00, 0xD7A3) ||
         isBetween(c, 0xE000, 0xFAFF);
}

bool isRightToLeft(char32_t c) noexcept {
  if (c < 0x590)
    return false;
  const auto direction = utf8proc_get_property(static_cast<utf8proc_int32_t>(c))->bidi_class;
  return direction == UTF8PROC_BIDI_CLASS_R || direction == UTF8PROC_BIDI_CLASS_AL;
}

/// Marks that follow a character. Normalisation sorts them, in quadratic time; no language has as
/// many (Unicode Standard Annex 15, 12.1).
constexpr int mostMarks = 30;

bool isMark(char32_t c) noexcept {
  return utf8proc_get_property(static_cast<utf8proc_int32_t>(c))->combining_class != 0;
}

/// In place of the text; what utf8proc refuses stays as it was.
void normalise(std::string &text) {
  constexpr auto options =
      static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_COMPAT);
  const auto *const bytes = reinterpret_cast<const utf8proc_uint8_t *>(text.data());
  const auto size = static_cast<utf8proc_ssize_t>(text.size());
  std::vector<utf8proc_int32_t> room(text.size() * 4 + 8);
  utf8proc_ssize_t length = utf8proc_decompose(
      bytes, size, room.data(), static_cast<utf8proc_ssize_t>(room.size()) - 1, options);
  if (length >= static_cast<utf8proc_ssize_t>(room.size())) {
    room.resize(static_cast<std::size_t>(length) + 1);
    length = utf8proc_decompose(bytes, size, room.data(), length, options);
  }
  if (length < 0)
    return;
  length = utf8proc_reencode(room.data(), length, options);
  if (length >= 0)
    text.assign(reinterpret_cast<const char *>(room.data()), static_cast<std::size_t>(length));
}

} // namespace

std::string normalised(std::string_view text, TextTraits &traits) {
  std::string cleaned;
  cleaned.reserve(text.size());
  bool isPlain = true;
  int marks = 0;
  for (std::size_t i = 0; i < text.size();) {
    const char32_t c = takeUtf8(text, i);
    if (isWhiteSpace(c)) {
      cleaned += ' ';
    } else if (!isDropped(c)) {
      marks = !isInert(c) && isMark(c) ? marks + 1 : 0;
      if (marks > mostMarks)
        continue;
      appendUtf8(cleaned, c);
      isPlain = isPlain && c < 0x80;
      traits.mayCompose = traits.mayCompose || !isInert(c);
      traits.isRightToLeft = traits.isRightToLeft || isRightToLeft(c);
      traits.hasSoftHyphen = traits.hasSoftHyphen || c == softHyphen;
    }
  }
  if (!isPlain)
    normalise(cleaned);
  return cleaned;
}

char32_t combiningMarkOf(char32_t accent) noexcept {
  switch (accent) {
  case 0x60:
  case 0x2CB:
    return 0x300;
  case 0xB4:
  case 0x2CA:
    return 0x301;
  case 0x2C6:
    return 0x302;
  case 0x2DC:
    return 0x303;
  case 0xAF:
  case 0x2C9:
    return 0x304;
  case 0x2D8:
    return 0x306;
  case 0x2D9:
    return 0x307;
  case 0xA8:
    return 0x308;
  case 0x2DA:
    return 0x30A;
  case 0x2DD:
    return 0x30B;
  case 0x2C7:
    return 0x30C;
  case 0xB8:
    return 0x327;
  case 0x2DB:
    return 0x328;
  default:
    return 0;
  }
}

bool isWrittenWithoutBlanks(char32_t c) noexcept {
  return isBetween(c, 0x2E80, 0x2FDF) || isBetween(c, 0x3001, 0x30FF) ||
         isBetween(c, 0x3400, 0x9FFF) || isBetween(c, 0xF900, 0xFAFF) ||
         isBetween(c, 0xFF01, 0xFF60) || isBetween(c, 0x20000, 0x3FFFF);
}

} // namespace searchsystem
