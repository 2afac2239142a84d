#include "hosts/ssfind/VisibleText.h"

#include "hosts/ssfind/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace searchsystem::ssfind {

namespace {

bool isPlain(char c) noexcept { return c >= 0x20 && c <= 0x7E && c != '\\'; }

void appendCode(std::string &out, const char *format, char32_t code) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), format, static_cast<unsigned>(code));
  out += text.data();
}

void appendEscape(std::string &out, char32_t code) {
  switch (code) {
  case '\n':
    out += "\\n";
    break;
  case '\t':
    out += "\\t";
    break;
  case '\r':
    out += "\\r";
    break;
  default:
    appendCode(out, code < 0x80 ? "\\x%02x" : "\\u{%x}", code);
  }
}

} // namespace

void appendVisible(std::string &out, std::string_view text) {
  while (!text.empty()) {
    const auto plainEnd = std::find_if_not(text.begin(), text.end(), isPlain);
    out.append(text.begin(), plainEnd);
    text.remove_prefix(static_cast<std::size_t>(plainEnd - text.begin()));
    if (text.empty())
      return;
    const Utf8Character character = firstCharacter(text);
    if (!character.isValid)
      appendCode(out, "\\x%02x", character.code);
    else if (character.code == '\\')
      out += "\\\\";
    else if (isControlCharacter(character.code))
      appendEscape(out, character.code);
    else
      out.append(text, 0, character.length);
    text.remove_prefix(character.length);
  }
}

std::string visible(std::string_view text) {
  std::string out;
  appendVisible(out, text);
  return out;
}

} // namespace searchsystem::ssfind
