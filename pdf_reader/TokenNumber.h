#pragma once

#include <cstdint>
#include <string_view>

namespace searchsystem {

/// The decimal number that a token begins with, 0 without one; beyond 32 bits the nearest number
/// that fits.
[[nodiscard]] std::int32_t numberOf(std::string_view token) noexcept;

/// The same for a position in a file; beyond 32 bits modulo 2^32.
[[nodiscard]] std::uint32_t offsetOf(std::string_view token) noexcept;

/// The number of a generation: its lower 16 bits.
[[nodiscard]] inline std::uint16_t generationOf(std::string_view token) noexcept {
  return static_cast<std::uint16_t>(numberOf(token));
}

} // namespace searchsystem
