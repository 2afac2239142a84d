#pragma once

#include <string_view>

namespace searchsystem {

/// About how wide a character of one of the standard 14 fonts is (ISO 32000-2, 9.6.2.2), in units
/// of the font's size, for documents that leave it out; of any other font a guess. Exact for ASCII
/// in Courier, Helvetica and Times, which is enough to find the blanks between words.
[[nodiscard]] double standardWidth(std::string_view fontName, char32_t character) noexcept;

} // namespace searchsystem
