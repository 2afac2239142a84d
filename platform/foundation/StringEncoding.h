#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// The encodings of text, by their Core Foundation numbers.
enum class StringEncoding : std::uint32_t {
  MacRoman = 0,
  /// Shift-JIS with the Mac's single bytes.
  MacJapanese = 1,
  /// Decoding only. A byte-order mark sets the order and is not part of the text; without one the
  /// text is big-endian.
  UTF16 = 0x0100,
  ISOLatin1 = 0x0201,
  ASCII = 0x0600,
  ShiftJIS_X0213 = 1576,
  /// Decoding only.
  ISO2022JP = 0x0820,
  UTF8 = 0x08000100,
};

/// `bytes` in the given encoding as UTF-8; none if they are invalid in it or it is unknown. Throws
/// `std::bad_alloc`. Any thread.
[[nodiscard]] std::optional<std::string> decodeText(std::string_view bytes, std::uint32_t encoding);

[[nodiscard]] inline std::optional<std::string> decodeText(std::string_view bytes,
                                                           StringEncoding encoding) {
  return decodeText(bytes, static_cast<std::uint32_t>(encoding));
}

/// `text` in the given encoding; none if a character cannot be encoded or the encoding is unknown.
/// As UTF-8, any bytes are copied unchanged. Throws `std::bad_alloc`. Any thread.
[[nodiscard]] std::optional<std::string> encodeText(std::string_view text, std::uint32_t encoding);

/// Whether the bytes of `text` are its form in the given encoding. Any thread.
[[nodiscard]] bool isStoredAs(std::string_view text, std::uint32_t encoding) noexcept;

} // namespace searchsystem
