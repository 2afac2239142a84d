#include "pdf_reader/HexString.h"

namespace searchsystem {

std::size_t decodeHexDigits(std::string_view digits, char *out, std::size_t capacity) noexcept {
  std::size_t size = 0;
  bool isHigh = true;
  unsigned value = 0;
  for (std::size_t i = 0; i < digits.size() && size < capacity; ++i) {
    const std::uint8_t digit = hexDigitValue(digits[i]);
    if (digit == noHexDigit)
      continue;
    value = value * 16 + digit;
    if (!isHigh)
      out[size++] = static_cast<char>(value);
    isHigh = !isHigh;
    value = isHigh ? 0 : value;
  }
  if (!isHigh && size < capacity)
    out[size++] = static_cast<char>(value * 16);
  return size;
}

} // namespace searchsystem
