#include "platform/foundation/StringEncoding.h"

#include <algorithm>
#include <utf8proc.h>

namespace {

bool isASCII(std::string_view text) noexcept {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Calls `take` with each code point and -1 for each byte that is not UTF-8, until it answers
/// false; whether it never did.
template <class Take> bool forEachCodePoint(std::string_view text, Take take) {
  while (!text.empty()) {
    utf8proc_int32_t codePoint = -1;
    const utf8proc_ssize_t length =
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t *>(text.data()),
                         static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
    if (!take(length > 0 ? codePoint : -1))
      return false;
    text.remove_prefix(length > 0 ? static_cast<std::size_t>(length) : 1);
  }
  return true;
}

std::string fromLatin1(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char byte : bytes) {
    utf8proc_uint8_t encoded[4];
    const utf8proc_ssize_t length = utf8proc_encode_char(static_cast<unsigned char>(byte), encoded);
    text.append(reinterpret_cast<const char *>(encoded), static_cast<std::size_t>(length));
  }
  return text;
}

std::optional<std::string> toLatin1(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  const auto take = [&](std::int32_t codePoint) {
    if (codePoint < 0 || codePoint > 0xFF)
      return false;
    bytes.push_back(static_cast<char>(codePoint));
    return true;
  };
  if (!forEachCodePoint(text, take))
    return std::nullopt;
  return bytes;
}

} // namespace

std::optional<std::string> decodeText(std::string_view bytes, std::uint32_t encoding) {
  bool isValid = false;
  switch (static_cast<StringEncoding>(encoding)) {
  case StringEncoding::UTF8:
    isValid = forEachCodePoint(bytes, [](std::int32_t codePoint) { return codePoint >= 0; });
    break;
  case StringEncoding::ASCII:
    isValid = isASCII(bytes);
    break;
  case StringEncoding::ISOLatin1:
    return fromLatin1(bytes);
  }
  if (!isValid)
    return std::nullopt;
  return std::string(bytes);
}

std::optional<std::string> encodeText(std::string_view text, std::uint32_t encoding) {
  if (static_cast<StringEncoding>(encoding) == StringEncoding::ISOLatin1)
    return toLatin1(text);
  if (!isStoredAs(text, encoding))
    return std::nullopt;
  return std::string(text);
}

bool isStoredAs(std::string_view text, std::uint32_t encoding) noexcept {
  switch (static_cast<StringEncoding>(encoding)) {
  case StringEncoding::UTF8:
    return true;
  case StringEncoding::ASCII:
  case StringEncoding::ISOLatin1:
    return isASCII(text);
  }
  return false;
}
