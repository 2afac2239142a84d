#pragma once

#include <bit>
#include <string>
#include <string_view>

namespace searchsystem {

/// Texts of photographs, in whatever encoding they are written, as UTF-8.

[[nodiscard]] bool isUtf8(std::string_view bytes) noexcept;

/// UTF-8 if the bytes are that, else Windows-1252, of which Latin-1 is a part.
[[nodiscard]] std::string textOfUnknownSet(std::string_view bytes);

/// UTF-8 in which each byte that belongs to no character is one of Windows-1252.
[[nodiscard]] std::string repairedUtf8(std::string_view bytes);

[[nodiscard]] std::string utf16ToUtf8(std::string_view bytes, std::endian order);
/// By its mark of byte order, if it has one, else in this order.
[[nodiscard]] std::string markedUtf16ToUtf8(std::string_view bytes, std::endian order);

/// Text of which an escape sequence announced the set (ISO/IEC 2022; ISO/IEC 8859 registers 100,
/// 101, 126, 144, 148 and 203). Where it announced none that is known, one of an unknown set.
[[nodiscard]] std::string textOfAnnouncedSet(std::string_view bytes, std::string_view escape);

/// The bytes before the first NUL.
[[nodiscard]] inline std::string_view untilNul(std::string_view bytes) noexcept {
  return bytes.substr(0, bytes.find('\0'));
}

} // namespace searchsystem
