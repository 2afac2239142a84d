#include "pdf_reader/HexString.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::uint8_t noDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> digitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(noDigit);
  for (unsigned i = 0; i < 10; ++i)
    values['0' + i] = static_cast<std::uint8_t>(i);
  for (unsigned i = 0; i < 6; ++i)
    values['A' + i] = values['a' + i] = static_cast<std::uint8_t>(10 + i);
  return values;
}();

std::uint8_t valueOf(char c) noexcept { return digitValues[static_cast<unsigned char>(c)]; }

constexpr std::size_t wordSize = sizeof(std::uint64_t);

constexpr std::uint64_t inEachByte(std::uint64_t byte) noexcept {
  return byte * 0x0101010101010101U;
}

/// The top bit of each byte that is at least `least`; all bytes must be below 0x80.
constexpr std::uint64_t bytesFrom(std::uint64_t word, unsigned least) noexcept {
  return (word + inEachByte(0x80 - least)) & inEachByte(0x80);
}

/// Eight digits to four bytes at once, the first in the lowest byte; false when one is no digit.
bool decodeWord(std::uint64_t word, std::uint32_t &bytes) noexcept {
  if ((word & inEachByte(0x80)) != 0)
    return false;
  const std::uint64_t lower = word | inEachByte(0x20);
  const std::uint64_t decimals = bytesFrom(word, '0') & ~bytesFrom(word, '9' + 1);
  const std::uint64_t letters = bytesFrom(lower, 'a') & ~bytesFrom(lower, 'f' + 1);
  if ((decimals | letters) != inEachByte(0x80))
    return false;
  const std::uint64_t values = (word & inEachByte(0x0F)) + (letters >> 7) * 9;
  std::uint64_t pairs = (values << 4 | values >> 8) & 0x00FF00FF00FF00FFU;
  pairs = (pairs | pairs >> 8) & 0x0000FFFF0000FFFFU;
  bytes = static_cast<std::uint32_t>(pairs | pairs >> 16);
  return true;
}

} // namespace

std::size_t countHexDigits(std::string_view digits) noexcept {
  std::size_t count = 0;
  for (const char c : digits)
    count += valueOf(c) != noDigit ? 1 : 0;
  return count;
}

std::size_t decodeHexDigits(std::string_view digits, char *out, std::size_t capacity) noexcept {
  std::size_t size = 0;
  std::size_t i = 0;
  while (i < digits.size() && size < capacity) {
    if constexpr (std::endian::native == std::endian::little) {
      while (digits.size() - i >= wordSize && capacity - size >= wordSize / 2) {
        std::uint64_t word = 0;
        std::uint32_t bytes = 0;
        std::memcpy(&word, digits.data() + i, wordSize);
        if (!decodeWord(word, bytes))
          break;
        std::memcpy(out + size, &bytes, sizeof bytes);
        size += sizeof bytes;
        i += wordSize;
      }
    }
    unsigned value = 0;
    int count = 0;
    for (; i < digits.size() && count < 2; ++i)
      if (const std::uint8_t digit = valueOf(digits[i]); digit != noDigit) {
        value = value * 16 + digit;
        ++count;
      }
    if (count == 0 || size == capacity)
      break;
    out[size++] = static_cast<char>(count == 2 ? value : value * 16);
  }
  return size;
}
