#pragma once

#include <array>
#include <bit>
#include <cstddef>
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

/// A check sum that detects damage, never 0 for zeros alone. It does not protect against forgery.
[[nodiscard]] inline std::uint64_t checkSum(std::string_view bytes) noexcept {
  constexpr std::uint64_t factor = 0xC2B2'AE3D'27D4'EB4F;
  // Four sums that do not wait for one another.
  std::array<std::uint64_t, 4> sums{1, 2, 3, 4};
  const auto add = [&](std::size_t lane, std::uint64_t word) {
    sums[lane] = std::rotl(sums[lane] + word * factor, 31) * factor;
  };
  const std::size_t size = bytes.size();
  std::size_t at = 0;
  for (std::array<std::uint64_t, 4> words; size - at >= sizeof words; at += sizeof words) {
    std::memcpy(words.data(), bytes.data() + at, sizeof words);
    for (std::size_t lane = 0; lane < words.size(); ++lane)
      add(lane, words[lane]);
  }
  std::size_t lane = 0;
  for (std::uint64_t word; size - at >= sizeof word; at += sizeof word) {
    std::memcpy(&word, bytes.data() + at, sizeof word);
    add(lane++, word);
  }
  std::uint64_t word = 0;
  std::memcpy(&word, bytes.data() + at, size - at);
  add(lane, word);
  return mix(mix(mix(sums[0], sums[1]), mix(sums[2], sums[3])), size);
}

} // namespace searchsystem
