#pragma once

#include <array>
#include <cstdint>

namespace searchsystem {

/// What a byte means in a line.
enum class ByteClass : std::uint8_t { text, comment, trim, lineEnd };

inline constexpr std::array<ByteClass, 256> byteClasses = [] {
  std::array<ByteClass, 256> classes{};
  classes['\r'] = classes['\n'] = ByteClass::lineEnd;
  classes['%'] = ByteClass::comment;
  classes['\0'] = classes['\t'] = classes[' '] = ByteClass::trim;
  return classes;
}();

[[nodiscard]] constexpr ByteClass classOf(unsigned char byte) noexcept { return byteClasses[byte]; }
[[nodiscard]] constexpr ByteClass classOf(char byte) noexcept {
  return classOf(static_cast<unsigned char>(byte));
}

} // namespace searchsystem
