#include "pdf_reader/TokenNumber.h"

#include <algorithm>
#include <limits>

namespace searchsystem {

namespace {

bool isSpace(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Takes the sign of a number; true for a minus.
bool takeSign(std::string_view &token) noexcept {
  while (!token.empty() && isSpace(token.front()))
    token.remove_prefix(1);
  const bool isNegative = token.starts_with('-');
  if (isNegative || token.starts_with('+'))
    token.remove_prefix(1);
  return isNegative;
}

/// The value of a digit; 10 and more for another byte.
unsigned valueOf(char c) noexcept { return static_cast<unsigned char>(c) - unsigned{'0'}; }

} // namespace

std::int32_t numberOf(std::string_view token) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  const bool isNegative = takeSign(token);
  const std::int64_t most = isNegative ? -std::int64_t{Limits::min()} : Limits::max();
  std::int64_t value = 0;
  for (const char c : token) {
    if (valueOf(c) > 9 || value == most)
      break;
    value = std::min(value * 10 + valueOf(c), most);
  }
  return static_cast<std::int32_t>(isNegative ? -value : value);
}

std::uint32_t offsetOf(std::string_view token) noexcept {
  const bool isNegative = takeSign(token);
  std::uint32_t value = 0;
  for (const char c : token) {
    if (valueOf(c) > 9)
      break;
    value = value * 10 + valueOf(c);
  }
  return isNegative ? 0 - value : value;
}

} // namespace searchsystem
