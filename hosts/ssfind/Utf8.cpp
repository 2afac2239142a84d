#include "hosts/ssfind/Utf8.h"

namespace ssfind {

namespace {

struct Lead {
  std::size_t length;
  unsigned char bits;
  char32_t smallest;
};

/// What the first byte tells of a character; a length of 0 for a byte that begins none.
constexpr Lead leadOf(unsigned char byte) noexcept {
  if (byte < 0x80)
    return {1, byte, 0};
  if (byte >= 0xC0 && byte < 0xE0)
    return {2, static_cast<unsigned char>(byte & 0x1F), 0x80};
  if (byte >= 0xE0 && byte < 0xF0)
    return {3, static_cast<unsigned char>(byte & 0x0F), 0x800};
  if (byte >= 0xF0 && byte < 0xF8)
    return {4, static_cast<unsigned char>(byte & 0x07), 0x10000};
  return {0, 0, 0};
}

} // namespace

Utf8Character firstCharacter(std::string_view text) noexcept {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const Utf8Character invalid{byteAt(0), 1, false};
  const Lead lead = leadOf(byteAt(0));
  if (lead.length == 0 || lead.length > text.size())
    return invalid;
  char32_t code = lead.bits;
  for (std::size_t i = 1; i < lead.length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80)
      return invalid;
    code = code << 6 | (byteAt(i) & 0x3F);
  }
  const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < lead.smallest || code > 0x10FFFF || isSurrogate)
    return invalid;
  return {code, lead.length, true};
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

} // namespace ssfind
