#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace searchsystem {

/// The splitmix64 generator: the same numbers for the same seed, on every machine.
class Random {
public:
  using Choices = std::span<const std::string_view>;

  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    std::uint64_t value = state_ += 0x9E3779B97F4A7C15;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
    return value ^ (value >> 31);
  }
  /// From 0 to `limit` - 1; `limit` is not 0.
  std::uint64_t below(std::uint64_t limit) { return next() % limit; }
  bool isOneIn(std::uint64_t count) { return below(count) == 0; }
  bool isBelow(double chance) { return static_cast<double>(next() >> 11) * 0x1p-53 < chance; }
  std::string_view oneOf(Choices choices) { return choices[below(choices.size())]; }

private:
  std::uint64_t state_;
};

} // namespace searchsystem
