#include "platform/foundation/TextPattern.h"

#include "platform/foundation/ASCIIText.h"
#include "platform/foundation/FoldedText.h"
#include "platform/foundation/PatternEnds.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <new>

namespace searchsystem {

namespace {

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

/// Calls `accept` with the end of each occurrence, until it returns true.
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

/// The bit in which the cases of a letter from a to z differ; of other characters none.
constexpr char caseBitOf(char c) noexcept { return c >= 'a' && c <= 'z' ? 'a' ^ 'A' : 0; }

} // namespace

TextPattern::TextPattern(std::string_view text, unsigned options)
    : options_(options), isASCII_(searchsystem::isASCII(text)) {
  if (isASCII_) {
    const bool foldCase = (options & NSCaseInsensitiveSearch) != 0;
    units_.reserve(text.size());
    for (const char c : text)
      units_.push_back(foldCase ? lowerASCII(c) : c);
  } else {
    const FoldedText folded(text, (options & NSCaseInsensitiveSearch) != 0,
                            (options & NSLiteralSearch) == 0);
    units_.reserve(folded.units.size());
    for (const FoldedText::Unit &unit : folded.units)
      units_.push_back(unit.codePoint);
    isASCII_ = std::ranges::all_of(units_, [](std::int32_t unit) { return unit < 0x80; });
  }
  // No character that is not ASCII becomes another ASCII one as a whole: see `mayBecomeASCII`.
  constexpr std::string_view mayStandForOthers = "fiklst;`";
  isFoundByBytes_ =
      isASCII_ &&
      (options == NSLiteralSearch || std::ranges::none_of(units_, [&](std::int32_t unit) {
         return mayStandForOthers.find(static_cast<char>(unit)) != std::string_view::npos;
       }));
  fallback_ = fallbackLengths(units_);
}

NSRange TextPattern::find(std::string_view text) const {
  if (units_.empty() || text.empty())
    return {};
  // In UTF-8 an ASCII byte is always a whole character, so that bytes can be compared.
  if (isFoundByBytes_ || (isASCII_ && FoldedText::holdsItsASCII(text)))
    return findBytes(text);
  return findFolded(text);
}

NSRange TextPattern::findBytes(std::string_view text) const noexcept {
  NSRange range;
  if (units_.empty() || text.empty())
    return range;
  const auto accept = [&](std::size_t end) {
    if ((options_ & NSLiteralSearch) == 0 && FoldedText::continuesCharacterAt(text, end))
      return false;
    range = {end - units_.size(), units_.size()};
    return true;
  };
  const bool foldCase = (options_ & NSCaseInsensitiveSearch) != 0;
  const std::size_t start = findCandidate(text);
  const auto unitAt = [&](std::size_t i) -> std::int32_t {
    return foldCase ? lowerASCII(text[start + i]) : text[start + i];
  };
  findOccurrence(units_, fallback_, text.size() - start, unitAt,
                 [&](std::size_t end) { return accept(start + end); });
  return range;
}

/// A position before which no occurrence of an ASCII pattern begins. Most texts have none, and the
/// pattern's first and last bytes rarely match together, so whole blocks can be skipped.
std::size_t TextPattern::findCandidate(std::string_view text) const noexcept {
  const std::size_t last = units_.size() - 1;
  const bool foldCase = (options_ & NSCaseInsensitiveSearch) != 0;
  const auto first = static_cast<char>(units_.front());
  const auto final = static_cast<char>(units_.back());
  const PatternEnds ends{first, foldCase ? caseBitOf(first) : '\0', final,
                         foldCase ? caseBitOf(final) : '\0'};
  const auto isCandidate = [&](const char *begin) {
    for (std::size_t i = 1; i < last; ++i)
      if (units_[i] != (foldCase ? lowerASCII(begin[i]) : begin[i]))
        return false;
    return true;
  };
  const std::size_t whole = PatternEnds::blockSize + last;
  std::size_t failures = 0;
  for (std::size_t position = 0;; position += PatternEnds::blockSize) {
    if (text.size() - position < whole)
      return position;
    const char *const block = text.data() + position;
    std::uint32_t begins = ends.begins(block, block + last);
    if (begins == 0)
      continue;
    // After too many failed candidates, leave the rest to the search that is always linear.
    if (failures * units_.size() > position + 1024)
      return position;
    for (; begins != 0; begins &= begins - 1) {
      const auto i = static_cast<std::size_t>(std::countr_zero(begins));
      if (isCandidate(block + i))
        return position + i;
      ++failures;
    }
  }
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

} // namespace searchsystem
