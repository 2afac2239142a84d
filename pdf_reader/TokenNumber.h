#pragma once

#include <cstdint>
#include <string_view>

namespace searchsystem {

/// The decimal number at the beginning of a token, else 0; beyond 32 bits the nearest that fits.
[[nodiscard]] std::int32_t numberOf(std::string_view token) noexcept;

/// The same for a position in a file; beyond 32 bits modulo 2^32.
[[nodiscard]] std::uint32_t offsetOf(std::string_view token) noexcept;

/// The number of a generation: its lower 16 bits.
[[nodiscard]] inline std::uint16_t generationOf(std::string_view token) noexcept {
  return static_cast<std::uint16_t>(numberOf(token));
}

} // namespace searchsystem
