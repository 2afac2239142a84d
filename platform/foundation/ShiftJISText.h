#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// The two forms of Shift-JIS.
enum class ShiftJIS {
  /// JIS X 0208, and the Mac's single bytes.
  MacJapanese,
  /// JIS X 0213.
  X0213,
};

/// `bytes` as UTF-8; none if they are invalid, or the C library lacks the two-byte characters.
/// Throws `std::bad_alloc`. Any thread.
[[nodiscard]] std::optional<std::string> decodeShiftJIS(std::string_view bytes, ShiftJIS form);

/// UTF-8 as Shift-JIS; none if it holds another character. Throws `std::bad_alloc`. Any thread.
[[nodiscard]] std::optional<std::string> encodeShiftJIS(std::string_view text, ShiftJIS form);

} // namespace searchsystem
