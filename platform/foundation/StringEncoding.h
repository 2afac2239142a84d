#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The encodings of text, by their Core Foundation numbers.
enum class StringEncoding : std::uint32_t {
  ISOLatin1 = 0x0201,
  ASCII = 0x0600,
  UTF8 = 0x08000100,
};

/// `bytes` in the given encoding as UTF-8; none when a byte is not valid in it, or the encoding is
/// unknown. Throws `std::bad_alloc`. Any thread.
[[nodiscard]] std::optional<std::string> decodeText(std::string_view bytes, std::uint32_t encoding);

/// `text` in the given encoding; none when a character cannot be given in it, or the encoding is
/// unknown. As UTF-8 any bytes are given as they are. Throws `std::bad_alloc`. Any thread.
[[nodiscard]] std::optional<std::string> encodeText(std::string_view text, std::uint32_t encoding);

/// Whether the bytes of `text` are its form in the given encoding. Any thread.
[[nodiscard]] bool isStoredAs(std::string_view text, std::uint32_t encoding) noexcept;
