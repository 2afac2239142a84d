#pragma once

#include <array>
#include <string_view>

namespace searchsystem {

/// The code point of each code of a simple font; 0 where there is none.
using Encoding = std::array<char16_t, 256>;

/// The encodings of Latin text, and the built-in ones of two standard fonts (ISO 32000-2, annex D).
/// A hyphen that may stand at line ends only is a hyphen.
extern const Encoding standardEncoding;
extern const Encoding windowsEncoding;
extern const Encoding macintoshEncoding;
extern const Encoding symbolEncoding;
extern const Encoding dingbatsEncoding;

/// One of the first three by its name in a document; null for any other name.
[[nodiscard]] const Encoding *encodingNamed(std::string_view name) noexcept;

} // namespace searchsystem
