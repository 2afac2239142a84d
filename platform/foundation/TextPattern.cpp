#include "platform/foundation/TextPattern.h"

#include "platform/foundation/FoldedText.h"

#include <limits>
#include <new>

namespace {

constexpr char foldASCII(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

template <class Sequence> std::vector<std::uint32_t> fallbackLengths(const Sequence &pattern) {
  if (pattern.size() >= std::numeric_limits<std::uint32_t>::max())
    throw std::bad_alloc();
  std::vector<std::uint32_t> lengths(pattern.size(), 0);
  std::uint32_t matched = 0;
  for (std::size_t i = 1; i < pattern.size(); ++i) {
    while (matched > 0 && pattern[i] != pattern[matched])
      matched = lengths[matched - 1];
    if (pattern[i] == pattern[matched])
      ++matched;
    lengths[i] = matched;
  }
  return lengths;
}

/// Calls `accept` with the end of each occurrence, until it answers true.
template <class Pattern, class UnitAt, class Accept>
bool findOccurrence(const Pattern &pattern, const std::vector<std::uint32_t> &fallback,
                    std::size_t size, UnitAt unitAt, Accept accept) {
  std::size_t matched = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const auto unit = unitAt(i);
    while (matched > 0 && unit != pattern[matched])
      matched = fallback[matched - 1];
    if (unit == pattern[matched])
      ++matched;
    if (matched == pattern.size()) {
      if (accept(i + 1))
        return true;
      matched = fallback[matched - 1];
    }
  }
  return false;
}

} // namespace

TextPattern::TextPattern(std::string_view text, unsigned options)
    : options_(options), isASCII_(FoldedText::isASCII(text)) {
  if (isASCII_) {
    const bool foldCase = (options & NSCaseInsensitiveSearch) != 0;
    units_.reserve(text.size());
    for (const char c : text)
      units_.push_back(foldCase ? foldASCII(c) : c);
  } else {
    const FoldedText folded(text, (options & NSCaseInsensitiveSearch) != 0,
                            (options & NSLiteralSearch) == 0);
    units_.reserve(folded.units.size());
    for (const FoldedText::Unit &unit : folded.units)
      units_.push_back(unit.codePoint);
  }
  fallback_ = fallbackLengths(units_);
}

NSRange TextPattern::find(std::string_view text) const {
  if (units_.empty() || text.empty())
    return {};
  // In UTF-8 an ASCII byte is always a character of its own, so that comparing code points is
  // comparing bytes.
  if (isASCII_ && (options_ == NSLiteralSearch || FoldedText::holdsItsASCII(text)))
    return findBytes(text);
  return findFolded(text);
}

NSRange TextPattern::findBytes(std::string_view text) const noexcept {
  NSRange range;
  const auto accept = [&](std::size_t end) {
    if ((options_ & NSLiteralSearch) == 0 && FoldedText::continuesCharacterAt(text, end))
      return false;
    range = {end - units_.size(), units_.size()};
    return true;
  };
  const auto search = [&](auto unitAt) {
    findOccurrence(units_, fallback_, text.size(), unitAt, accept);
  };
  if ((options_ & NSCaseInsensitiveSearch) != 0)
    search([&](std::size_t i) { return std::int32_t{foldASCII(text[i])}; });
  else
    search([&](std::size_t i) { return std::int32_t{text[i]}; });
  return range;
}

NSRange TextPattern::findFolded(std::string_view text) const {
  const FoldedText folded(text, (options_ & NSCaseInsensitiveSearch) != 0,
                          (options_ & NSLiteralSearch) == 0);
  const std::vector<FoldedText::Unit> &units = folded.units;
  NSRange range;
  const auto accept = [&](std::size_t end) {
    const std::size_t begin = end - units_.size();
    if (!units[begin].isBoundary || (end < units.size() && !units[end].isBoundary))
      return false;
    const std::size_t sourceEnd = end < units.size() ? units[end].source : text.size();
    range = {units[begin].source, sourceEnd - units[begin].source};
    return true;
  };
  findOccurrence(
      units_, fallback_, units.size(), [&](std::size_t i) { return units[i].codePoint; }, accept);
  return range;
}
