#include "readers/photographs/CharacterSets.h"

#include "readers/documents/Utf8.h"
#include "readers/photographs/ByteNumbers.h"

#include <cstddef>

namespace searchsystem {

namespace {

/// From 0x80 on, as far as Windows-1252 differs from Latin-1; a blank where there is none.
constexpr std::u16string_view windows = u"€ ‚ƒ„…†‡ˆ‰Š‹Œ Ž  ‘’“”•–—˜™š›œ žŸ";

/// From 0xA0 on; a blank where there is none.
constexpr std::u16string_view centralEuropean =
    u"\u00A0Ą˘Ł¤ĽŚ§¨ŠŞŤŹ\u00ADŽŻ°ą˛ł´ľśˇ¸šşťź˝žżŔÁÂĂÄĹĆÇČÉĘËĚÍÎĎ"
    u"ĐŃŇÓÔŐÖ×ŘŮÚŰÜÝŢßŕáâăäĺćçčéęëěíîďđńňóôőö÷řůúűüýţ˙";
constexpr std::u16string_view cyrillic =
    u"\u00A0ЁЂЃЄЅІЇЈЉЊЋЌ\u00ADЎЏАБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ"
    u"абвгдежзийклмнопрстуфхцчшщъыьэюя№ёђѓєѕіїјљњћќ§ўџ";
constexpr std::u16string_view greek = u"\u00A0‘’£€₯¦§¨©ͺ«¬\u00AD ―°±²³΄΅Ά·ΈΉΊ»Ό½ΎΏΐΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟ"
                                      u"ΠΡ ΣΤΥΦΧΨΩΪΫάέήίΰαβγδεζηθικλμνξοπρςστυφχψωϊϋόύώ ";
constexpr std::u16string_view turkish =
    u"\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
    u"ĞÑÒÓÔÕÖ×ØÙÚÛÜİŞßàáâãäåæçèéêëìíîïğñòóôõö÷øùúûüışÿ";
constexpr std::u16string_view western =
    u"\u00A0¡¢£€¥Š§š©ª«¬\u00AD®¯°±²³Žµ¶·ž¹º»ŒœŸ¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
    u"ÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞßàáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ";

char32_t windowsCharacter(char byte) noexcept {
  const auto code = static_cast<unsigned char>(byte);
  return code >= 0x80 && code < 0xA0 ? static_cast<char32_t>(windows[code - 0x80]) : code;
}

/// The length of the character of UTF-8 at the beginning of `bytes`, which are not empty; 0 if
/// there is none (RFC 3629, 4).
std::size_t characterLength(std::string_view bytes) noexcept {
  const auto first = static_cast<unsigned char>(bytes[0]);
  if (first < 0x80)
    return 1;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || bytes.size() < length)
    return 0;
  for (std::size_t i = 1; i < length; ++i)
    if ((static_cast<unsigned char>(bytes[i]) & 0xC0) != 0x80)
      return 0;
  std::size_t position = 0;
  const char32_t character = takeUtf8(bytes, position);
  const bool isTooLong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
  const bool isHalf = character >= 0xD800 && character < 0xE000;
  return isTooLong || isHalf || character > 0x10FFFF ? 0 : length;
}

std::string withUpperHalf(std::string_view bytes, std::u16string_view upperHalf) {
  std::string text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    appendUtf8(text, code >= 0xA0 ? static_cast<char32_t>(upperHalf[code - 0xA0]) : code);
  }
  return text;
}

std::string latinToUtf8(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes)
    appendUtf8(text, static_cast<unsigned char>(byte));
  return text;
}

} // namespace

bool isUtf8(std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const std::size_t length = characterLength(bytes);
    if (length == 0)
      return false;
    bytes.remove_prefix(length);
  }
  return true;
}

std::string textOfUnknownSet(std::string_view bytes) {
  if (isUtf8(bytes))
    return std::string(bytes);
  std::string text;
  for (const char byte : bytes)
    appendUtf8(text, windowsCharacter(byte));
  return text;
}

std::string repairedUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const std::size_t length = characterLength(bytes);
    if (length == 0)
      appendUtf8(text, windowsCharacter(bytes[0]));
    else
      text += bytes.substr(0, length);
    bytes.remove_prefix(length == 0 ? 1 : length);
  }
  return text;
}

std::string utf16ToUtf8(std::string_view bytes, std::endian order) {
  std::string text;
  appendUtf16(text, bytes, order);
  return text;
}

std::string markedUtf16ToUtf8(std::string_view bytes, std::endian order) {
  if (bytes.starts_with("\xFF\xFE"))
    return utf16ToUtf8(bytes.substr(2), std::endian::little);
  if (bytes.starts_with("\xFE\xFF"))
    return utf16ToUtf8(bytes.substr(2), std::endian::big);
  return utf16ToUtf8(bytes, order);
}

std::string textOfAnnouncedSet(std::string_view bytes, std::string_view escape) {
  if (escape == "\x1B%G")
    return repairedUtf8(bytes);
  // A set of 96 characters, as G1, G2 or G3.
  const bool isSet =
      escape.size() == 3 && escape[0] == '\x1B' && escape[1] >= '-' && escape[1] <= '/';
  switch (isSet ? escape[2] : '\0') {
  case 'A':
    return latinToUtf8(bytes);
  case 'B':
    return withUpperHalf(bytes, centralEuropean);
  case 'F':
    return withUpperHalf(bytes, greek);
  case 'L':
    return withUpperHalf(bytes, cyrillic);
  case 'M':
    return withUpperHalf(bytes, turkish);
  case 'b':
    return withUpperHalf(bytes, western);
  default:
    return textOfUnknownSet(bytes);
  }
}

} // namespace searchsystem
