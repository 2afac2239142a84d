#include "hosts/ssfind/Utf8.h"

#include <utf8proc.h>

namespace searchsystem::ssfind {

Utf8Character firstCharacter(std::string_view text) noexcept {
  const auto *const bytes = reinterpret_cast<const utf8proc_uint8_t *>(text.data());
  utf8proc_int32_t code = 0;
  const utf8proc_ssize_t length =
      utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &code);
  if (length <= 0)
    return {*bytes, 1, false};
  return {static_cast<char32_t>(code), static_cast<std::size_t>(length), true};
}

bool isUtf8(std::string_view text) noexcept {
  while (!text.empty()) {
    const Utf8Character character = firstCharacter(text);
    if (!character.isValid)
      return false;
    text.remove_prefix(character.length);
  }
  return true;
}

bool isControlCharacter(char32_t code) noexcept {
  const bool isControl = code < 0x20 || (code >= 0x7F && code <= 0x9F);
  const bool isBidirectional = code == 0x061C || code == 0x200E || code == 0x200F ||
                               (code >= 0x202A && code <= 0x202E) ||
                               (code >= 0x2066 && code <= 0x2069);
  return isControl || isBidirectional;
}

} // namespace searchsystem::ssfind
