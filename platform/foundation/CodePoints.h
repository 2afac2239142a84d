#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace searchsystem {

/// Appends a code point, not a surrogate, in UTF-8. Throws `std::bad_alloc`.
void appendCodePoint(std::string &text, std::int32_t codePoint);

/// Removes and returns the first code point of a nonempty text; -1 for a byte that is not UTF-8.
[[nodiscard]] std::int32_t takeCodePoint(std::string_view &text) noexcept;

} // namespace searchsystem
