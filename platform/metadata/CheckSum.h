#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace searchsystem {

/// Mixes two numbers so that every bit of the result depends on every bit of both.
[[nodiscard]] constexpr std::uint64_t mix(std::uint64_t a, std::uint64_t b) noexcept {
  constexpr std::uint64_t odd = 0x9E37'79B9'7F4A'7C15;
  std::uint64_t mixed = (a ^ (b + odd + (a << 6) + (a >> 2))) * 0xBF58'476D'1CE4'E5B9;
  mixed = (mixed ^ (mixed >> 31)) * 0x94D0'49BB'1331'11EB;
  return mixed ^ (mixed >> 29);
}

/// A check sum that detects damage. It does not protect against forgery.
[[nodiscard]] inline std::uint64_t checkSum(std::uint64_t seed, std::string_view bytes) noexcept {
  std::uint64_t sum = mix(seed, bytes.size());
  while (!bytes.empty()) {
    const std::size_t size = bytes.size() < sizeof(std::uint64_t) ? bytes.size() : sizeof sum;
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data(), size);
    sum = mix(sum, word);
    bytes.remove_prefix(size);
  }
  return sum;
}

} // namespace searchsystem
