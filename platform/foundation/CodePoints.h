#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Appends a code point, which is none of the surrogates, in UTF-8. Throws `std::bad_alloc`.
void appendCodePoint(std::string &text, std::int32_t codePoint);

/// Takes the first code point from a text, which is not empty; -1 for a byte that is not UTF-8.
[[nodiscard]] std::int32_t takeCodePoint(std::string_view &text) noexcept;
