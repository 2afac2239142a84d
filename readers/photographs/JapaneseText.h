#pragma once

#include <string>
#include <string_view>

namespace searchsystem {

/// Text in the seven-bit encoding of JIS X 0208 (ISO-2022-JP, RFC 1468), with the half-width
/// katakana of JIS X 0201, as UTF-8. U+FFFD for what is no character.
[[nodiscard]] std::string japaneseToUtf8(std::string_view bytes);

} // namespace searchsystem
