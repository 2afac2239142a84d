#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

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

/// Calls `take` with each word of a line, until it returns false.
template <class IsSeparator, class Take>
void forEachWord(std::string_view line, IsSeparator isSeparator, Take take) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    const std::size_t start = i;
    while (i < line.size() && !isSeparator(line[i]))
      ++i;
    if (i > start && !take(line.substr(start, i - start)))
      return;
  }
}

} // namespace searchsystem
