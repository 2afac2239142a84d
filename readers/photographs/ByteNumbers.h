#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace searchsystem {

/// The number that the first `size` bytes of `bytes` are. 0 where there are fewer.
[[nodiscard]] inline std::uint64_t numberOf(std::string_view bytes, std::size_t size,
                                            std::endian order) noexcept {
  if (bytes.size() < size)
    return 0;
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < size; ++i)
    number = number << 8 |
             static_cast<unsigned char>(bytes[order == std::endian::big ? i : size - 1 - i]);
  return number;
}

[[nodiscard]] inline std::uint64_t bigNumber(std::string_view bytes, std::size_t size) noexcept {
  return numberOf(bytes, size, std::endian::big);
}

[[nodiscard]] inline std::uint64_t littleNumber(std::string_view bytes, std::size_t size) noexcept {
  return numberOf(bytes, size, std::endian::little);
}

} // namespace searchsystem
