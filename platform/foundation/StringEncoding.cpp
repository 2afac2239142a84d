#include "platform/foundation/StringEncoding.h"

#include "platform/foundation/ASCIIText.h"
#include "platform/foundation/CodePoints.h"
#include "platform/foundation/IconvText.h"
#include "platform/foundation/ShiftJISText.h"
#include "platform/foundation/SingleByteText.h"

#include <algorithm>
#include <cstddef>

namespace searchsystem {

namespace {

bool isUTF8(std::string_view text) noexcept {
  while (!text.empty())
    if (takeCodePoint(text) < 0)
      return false;
  return true;
}

std::optional<std::string> copyIf(bool isValid, std::string_view text) {
  return isValid ? std::optional<std::string>(text) : std::nullopt;
}

std::string decodeSingleBytes(std::string_view bytes, const SingleByteTable &table) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  while (!bytes.empty()) {
    const std::size_t run = lengthOfASCIIRun(bytes);
    text.append(bytes.substr(0, run));
    bytes.remove_prefix(run);
    for (; !bytes.empty() && static_cast<unsigned char>(bytes.front()) >= 0x80;
         bytes.remove_prefix(1))
      appendCodePoint(text, characterOf(bytes.front(), table));
  }
  return text;
}

std::optional<std::string> encodeSingleBytes(std::string_view text, const SingleByteTable &table) {
  return encodeBytes(text, table, [](auto & /*rest*/, auto & /*bytes*/) { return false; });
}

bool isHighSurrogate(std::int32_t unit) noexcept { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(std::int32_t unit) noexcept { return unit >= 0xDC00 && unit < 0xE000; }

std::optional<std::string> decodeUTF16(std::string_view bytes) {
  if (bytes.size() % 2 != 0)
    return std::nullopt;
  const bool isLittleEndian = bytes.starts_with("\xFF\xFE");
  const auto unitAt = [&](std::size_t i) -> std::int32_t {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    return isLittleEndian ? second << 8 | first : first << 8 | second;
  };
  std::string text;
  const std::size_t markSize = isLittleEndian || bytes.starts_with("\xFE\xFF") ? 2 : 0;
  for (std::size_t i = markSize; i < bytes.size(); i += 2) {
    std::int32_t codePoint = unitAt(i);
    if (isHighSurrogate(codePoint)) {
      i += 2;
      if (i == bytes.size() || !isLowSurrogate(unitAt(i)))
        return std::nullopt;
      codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (unitAt(i) - 0xDC00);
    } else if (isLowSurrogate(codePoint)) {
      return std::nullopt;
    }
    appendCodePoint(text, codePoint);
  }
  return text;
}

} // namespace

std::optional<std::string> decodeText(std::string_view bytes, std::uint32_t encoding) {
  switch (static_cast<StringEncoding>(encoding)) {
  case StringEncoding::UTF8:
    return copyIf(isASCII(bytes) || isUTF8(bytes), bytes);
  case StringEncoding::ASCII:
    return copyIf(isASCII(bytes), bytes);
  case StringEncoding::ISOLatin1:
    return decodeSingleBytes(bytes, isoLatin1Table);
  case StringEncoding::MacRoman:
    return decodeSingleBytes(bytes, macRomanTable);
  case StringEncoding::MacJapanese:
    return decodeShiftJIS(bytes, ShiftJIS::MacJapanese);
  case StringEncoding::ShiftJIS_X0213:
    return decodeShiftJIS(bytes, ShiftJIS::X0213);
  case StringEncoding::UTF16:
    return decodeUTF16(bytes);
  case StringEncoding::ISO2022JP:
    return IconvText("UTF-8", "ISO-2022-JP").convert(bytes);
  }
  return std::nullopt;
}

std::optional<std::string> encodeText(std::string_view text, std::uint32_t encoding) {
  switch (static_cast<StringEncoding>(encoding)) {
  case StringEncoding::UTF8:
  case StringEncoding::ASCII:
    return copyIf(isStoredAs(text, encoding), text);
  case StringEncoding::ISOLatin1:
    return encodeSingleBytes(text, isoLatin1Table);
  case StringEncoding::MacRoman:
    return encodeSingleBytes(text, macRomanTable);
  case StringEncoding::MacJapanese:
    return encodeShiftJIS(text, ShiftJIS::MacJapanese);
  case StringEncoding::ShiftJIS_X0213:
    return encodeShiftJIS(text, ShiftJIS::X0213);
  case StringEncoding::UTF16:
  case StringEncoding::ISO2022JP:
    break;
  }
  return std::nullopt;
}

bool isStoredAs(std::string_view text, std::uint32_t encoding) noexcept {
  using enum StringEncoding;
  const auto form = static_cast<StringEncoding>(encoding);
  // In Shift-JIS a backslash is another byte or none.
  return form == UTF8 ||
         ((form == ASCII || form == ISOLatin1 || form == MacRoman) && isASCII(text));
}

} // namespace searchsystem
