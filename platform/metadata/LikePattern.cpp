#include "platform/metadata/LikePattern.h"

#include "platform/foundation/ASCIIText.h"
#include "platform/foundation/FoldedText.h"
#include "platform/foundation/PathComponents.h"

#include <algorithm>
#include <optional>

namespace searchsystem {

namespace {

constexpr std::int32_t anyText = -1;
constexpr std::int32_t anyCharacter = -2;

} // namespace

LikePattern::LikePattern(std::string_view pattern, bool regardsCase) : regardsCase_(regardsCase) {
  std::string text;
  std::vector<bool> isWildcard;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const bool isEscaped = pattern[i] == '\\' && i + 1 < pattern.size();
    i += isEscaped ? 1 : 0;
    text.push_back(pattern[i]);
    isWildcard.push_back(!isEscaped && (pattern[i] == '*' || pattern[i] == '?'));
  }
  const FoldedText folded(text, !regardsCase, true);
  units_.reserve(folded.units.size());
  for (const FoldedText::Unit &unit : folded.units) {
    const bool isStar = unit.codePoint == '*';
    units_.push_back(!isWildcard[unit.source] ? unit.codePoint : isStar ? anyText : anyCharacter);
  }
  const auto isPlainASCII = [](std::int32_t unit) { return unit >= 0 && unit < 0x80; };
  if (units_.size() > 1 && units_.front() == anyText &&
      std::all_of(units_.begin() + 1, units_.end(), isPlainASCII))
    suffix_.assign(units_.begin() + 1, units_.end());
}

bool LikePattern::matches(std::string_view name) const {
  if (suffix_.empty())
    return matchesFolded(name);
  std::size_t begin = name.size() - std::min(name.size(), suffix_.size());
  const std::string_view end = name.substr(begin);
  if (regardsCase_ ? end == suffix_ : equalIgnoringASCIICase(end, suffix_))
    return true;
  // Each character of the suffix matches at most one of the name; so only the characters here can
  // still fold to it.
  if (isASCII(end))
    return false;
  while (begin > 0 && (static_cast<unsigned char>(name[begin]) & 0xC0) == 0x80)
    --begin;
  return !FoldedText::holdsItsASCII(name.substr(begin)) && matchesFolded(name);
}

bool LikePattern::matchesFolded(std::string_view name) const {
  const FoldedText folded(name, !regardsCase_, true);
  const std::vector<FoldedText::Unit> &text = folded.units;
  const auto isBoundary = [&](std::size_t i) { return i == text.size() || text[i].isBoundary; };
  const auto nextBoundary = [&](std::size_t i) {
    do
      ++i;
    while (!isBoundary(i));
    return i;
  };
  // The text of the last `*` grows until the rest of the pattern matches. Earlier ones need no
  // retry: what follows each was found where it first occurs.
  std::optional<std::size_t> afterStar;
  std::size_t starEnd = 0;
  std::size_t unit = 0;
  std::size_t position = 0;
  for (;;) {
    const std::int32_t wanted = unit < units_.size() ? units_[unit] : anyText;
    if (unit < units_.size() && wanted == anyText && isBoundary(position)) {
      afterStar = ++unit;
      starEnd = position;
    } else if (position < text.size() && wanted == anyCharacter && isBoundary(position)) {
      ++unit;
      position = nextBoundary(position);
    } else if (position < text.size() && wanted == text[position].codePoint) {
      ++unit;
      ++position;
    } else if (unit == units_.size() && position == text.size()) {
      return true;
    } else if (!afterStar || starEnd == text.size()) {
      return false;
    } else {
      starEnd = nextBoundary(starEnd);
      position = starEnd;
      unit = *afterStar;
    }
  }
}

} // namespace searchsystem
