#include "platform/foundation/FoldedText.h"

#include "platform/foundation/ASCIIText.h"
#include "platform/foundation/CodePoints.h"

#include <algorithm>
#include <array>
#include <utf8proc.h>

namespace searchsystem {

namespace {

bool continuesHangulSyllable(std::int32_t before, std::int32_t codePoint) noexcept {
  const unsigned previous = utf8proc_get_property(before)->boundclass;
  const unsigned next = utf8proc_get_property(codePoint)->boundclass;
  if (next == UTF8PROC_BOUNDCLASS_V)
    return previous == UTF8PROC_BOUNDCLASS_L || previous == UTF8PROC_BOUNDCLASS_V;
  return next == UTF8PROC_BOUNDCLASS_T &&
         (previous == UTF8PROC_BOUNDCLASS_V || previous == UTF8PROC_BOUNDCLASS_T);
}

/// Whether `codePoint` belongs to the composed character that `before` begins or continues.
bool continuesCharacter(std::int32_t before, std::int32_t codePoint) noexcept {
  constexpr std::int32_t firstMark = 0x300;
  if (codePoint < firstMark || codePoint >= FoldedText::firstByteUnit)
    return false;
  const utf8proc_category_t category = utf8proc_category(codePoint);
  return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_MC ||
         category == UTF8PROC_CATEGORY_ME || continuesHangulSyllable(before, codePoint);
}

int combiningClass(const FoldedText::Unit &unit) noexcept {
  return utf8proc_get_property(unit.codePoint)->combining_class;
}

/// Unicode standard, 3.11 "Canonical Ordering Algorithm".
void orderMarks(std::vector<FoldedText::Unit> &units) {
  auto isStarter = [](const FoldedText::Unit &unit) { return combiningClass(unit) == 0; };
  auto begin = units.begin();
  while (begin != units.end()) {
    begin = std::find_if_not(begin, units.end(), isStarter);
    const auto end = std::find_if(begin, units.end(), isStarter);
    if (end - begin > 1)
      std::ranges::stable_sort(begin, end, {}, combiningClass);
    begin = end;
  }
}

/// Whether these are the first two bytes, in UTF-8, of a character that is not ASCII but becomes
/// ASCII by case folding or canonical decomposition: ß, the long s, the Greek question mark, the
/// capital ß, the Greek grave accent, the Kelvin sign, and the Latin ligatures. A few neighbours
/// begin alike.
bool mayBecomeASCII(unsigned char first, unsigned char second) noexcept {
  const unsigned both = unsigned{first} << 8 | second;
  return both == 0xC39F || both == 0xC5BF || both == 0xCDBE || both == 0xE1BA || both == 0xE1BF ||
         both == 0xE284 || both == 0xEFAC;
}

} // namespace

FoldedText::FoldedText(std::string_view text, bool foldCase, bool decompose) {
  const auto options = static_cast<utf8proc_option_t>((foldCase ? UTF8PROC_CASEFOLD : 0) |
                                                      (decompose ? UTF8PROC_DECOMPOSE : 0));

  // The longest full decomposition or folding of one code point is shorter than this.
  std::array<utf8proc_int32_t, 32> expansion{};
  units.reserve(text.size());
  bool hasMarks = false;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t position = text.size() - rest.size();
    if (static_cast<unsigned char>(rest.front()) < 0x80) {
      units.push_back({foldCase ? lowerASCII(rest.front()) : rest.front(), true, position});
      rest.remove_prefix(1);
      continue;
    }
    const std::int32_t codePoint = takeCodePoint(rest);
    if (codePoint < 0) {
      units.push_back({firstByteUnit + static_cast<unsigned char>(text[position]), true, position});
      continue;
    }
    int boundClass = UTF8PROC_BOUNDCLASS_START;
    const utf8proc_ssize_t count = utf8proc_decompose_char(codePoint, expansion.data(),
                                                           expansion.size(), options, &boundClass);
    for (utf8proc_ssize_t i = 0; i < count; ++i) {
      const utf8proc_int32_t unit = expansion[static_cast<std::size_t>(i)];
      // Folding makes the iota subscript a letter; it still belongs to the one before.
      const bool continues = decompose && !units.empty() &&
                             (continuesCharacter(units.back().codePoint, unit) ||
                              (i == 0 && continuesCharacter(units.back().codePoint, codePoint)));
      units.push_back({unit, i == 0 && !continues, position});
      hasMarks |= continues;
    }
  }
  if (units.empty())
    return;
  // The text may begin with marks, and sorting may move another one to the front.
  units.front().isBoundary = false;
  if (hasMarks)
    orderMarks(units);
  units.front() = {units.front().codePoint, true, 0};
}

bool FoldedText::continuesCharacterAt(std::string_view text, std::size_t position) noexcept {
  if (position >= text.size() || static_cast<unsigned char>(text[position]) < 0x80)
    return false;
  std::string_view rest = text.substr(position);
  return continuesCharacter(text[position - 1], takeCodePoint(rest));
}

bool FoldedText::holdsItsASCII(std::string_view text) noexcept {
  if (isASCII(text))
    return true;
  for (std::size_t i = 0; i + 1 < text.size(); ++i)
    if (static_cast<unsigned char>(text[i]) >= 0x80 &&
        mayBecomeASCII(static_cast<unsigned char>(text[i]),
                       static_cast<unsigned char>(text[i + 1])))
      return false;
  return true;
}

} // namespace searchsystem
