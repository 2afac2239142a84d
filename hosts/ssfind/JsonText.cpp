#include "hosts/ssfind/JsonText.h"

#include "hosts/ssfind/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace searchsystem::ssfind {

namespace {

/// RFC 8259, 7; control characters beyond ASCII are escaped for the sake of terminals.
void appendEscape(std::string &out, char32_t code) {
  constexpr std::string_view characters = "\b\f\n\r\t";
  constexpr std::string_view letters = "bfnrt";
  const std::size_t place =
      code < 0x80 ? characters.find(static_cast<char>(code)) : std::string_view::npos;
  if (place != std::string_view::npos) {
    out += '\\';
    out += letters[place];
    return;
  }
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "\\u%04x", static_cast<unsigned>(code));
  out += text.data();
}

} // namespace

void appendJsonName(std::string &out, std::string_view name) {
  if (!isUtf8(name)) {
    out += "{\"bytes\":\"";
    appendBase64(out, name);
    out += "\"}";
    return;
  }
  out += '"';
  while (!name.empty()) {
    const Utf8Character character = firstCharacter(name);
    if (isControlCharacter(character.code)) {
      appendEscape(out, character.code);
    } else {
      if (character.code == '"' || character.code == '\\')
        out += '\\';
      out.append(name, 0, character.length);
    }
    name.remove_prefix(character.length);
  }
  out += '"';
}

void appendBase64(std::string &out, std::string_view bytes) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  while (!bytes.empty()) {
    const std::size_t count = std::min<std::size_t>(bytes.size(), 3);
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i)
      group = group << 8 | (i < count ? static_cast<unsigned char>(bytes[i]) : 0U);
    for (std::size_t i = 0; i < 4; ++i)
      out += i <= count ? digits[group >> (18 - 6 * i) & 0x3F] : '=';
    bytes.remove_prefix(count);
  }
}

} // namespace searchsystem::ssfind
