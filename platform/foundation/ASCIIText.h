#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace searchsystem {

/// The lower case of a letter from A to Z; other characters unchanged. Any thread.
[[nodiscard]] constexpr char lowerASCII(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// Whether a text is ASCII. Any thread.
[[nodiscard]] inline bool isASCII(std::string_view text) noexcept {
  constexpr std::uint64_t topBits = 0x8080808080808080U;
  std::uint64_t seen = 0;
  while (text.size() >= sizeof seen) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), sizeof word);
    seen |= word;
    text.remove_prefix(sizeof word);
  }
  for (const char c : text)
    seen |= static_cast<unsigned char>(c);
  return (seen & topBits) == 0;
}

/// The number of ASCII bytes at the beginning of a text. Reads many at once, since most texts are
/// all ASCII. Any thread.
[[nodiscard]] inline std::size_t lengthOfASCIIRun(std::string_view text) noexcept {
  constexpr std::uint64_t topBits = 0x8080808080808080U;
  constexpr std::size_t count = 4;
  std::uint64_t words[count];
  std::size_t i = 0;
  for (; text.size() - i >= sizeof words; i += sizeof words) {
    std::memcpy(words, text.data() + i, sizeof words);
    if (((words[0] | words[1] | words[2] | words[3]) & topBits) != 0)
      break;
  }
  while (i < text.size() && static_cast<unsigned char>(text[i]) < 0x80)
    ++i;
  return i;
}

} // namespace searchsystem
