#include "pdf_reader/TokenNumber.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace {

struct Digits {
  bool isNegative;
  std::string_view text;
};

bool isSpace(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

Digits digitsOf(std::string_view token) noexcept {
  while (!token.empty() && isSpace(token.front()))
    token.remove_prefix(1);
  const bool isNegative = token.starts_with('-');
  if (isNegative || token.starts_with('+'))
    token.remove_prefix(1);
  std::size_t count = 0;
  while (count < token.size() && isDigit(token[count]))
    ++count;
  return {isNegative, token.substr(0, count)};
}

} // namespace

std::int32_t numberOf(std::string_view token) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  const Digits digits = digitsOf(token);
  const std::int64_t most = digits.isNegative ? -std::int64_t{Limits::min()} : Limits::max();
  std::int64_t value = 0;
  for (const char c : digits.text) {
    value = std::min(value * 10 + (c - '0'), most);
    if (value == most)
      break;
  }
  return static_cast<std::int32_t>(digits.isNegative ? -value : value);
}

std::uint32_t offsetOf(std::string_view token) noexcept {
  const Digits digits = digitsOf(token);
  std::uint32_t value = 0;
  for (const char c : digits.text)
    value = value * 10 + static_cast<std::uint32_t>(c - '0');
  return digits.isNegative ? 0 - value : value;
}
