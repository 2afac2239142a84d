#include "platform/foundation/FoldedText.h"

#include "platform/foundation/ASCIIText.h"
#include "platform/foundation/CodePoints.h"

#include <algorithm>
#include <array>
#include <utf8proc.h>

namespace {

bool continuesHangulSyllable(std::int32_t before, std::int32_t codePoint) noexcept {
  const unsigned previous = utf8proc_get_property(before)->boundclass;
  switch (utf8proc_get_property(codePoint)->boundclass) {
  case UTF8PROC_BOUNDCLASS_V:
    return previous == UTF8PROC_BOUNDCLASS_L || previous == UTF8PROC_BOUNDCLASS_V;
  case UTF8PROC_BOUNDCLASS_T:
    return previous == UTF8PROC_BOUNDCLASS_V || previous == UTF8PROC_BOUNDCLASS_T;
  default:
    return false;
  }
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
      std::stable_sort(begin, end, [](const auto &a, const auto &b) {
        return combiningClass(a) < combiningClass(b);
      });
    begin = end;
  }
}

/// The characters that are not ASCII but become ASCII when case is folded or canonical equivalence
/// resolved, by the first two bytes of their UTF-8 form: ß, the long s, the Greek question mark and
/// grave accent, the Kelvin sign, the capital ß, and the Latin ligatures. (A few neighbours share
/// their beginning.)
bool mayBecomeASCII(unsigned char first, unsigned char second) noexcept {
  switch (first) {
  case 0xC3:
    return second == 0x9F;
  case 0xC5:
    return second == 0xBF;
  case 0xCD:
    return second == 0xBE;
  case 0xE1:
    return second == 0xBA || second == 0xBF;
  case 0xE2:
    return second == 0x84;
  case 0xEF:
    return second == 0xAC;
  default:
    return false;
  }
}

} // namespace

FoldedText::FoldedText(std::string_view text, bool foldCase, bool decompose) {
  int options = 0;
  if (foldCase)
    options |= UTF8PROC_CASEFOLD;
  if (decompose)
    options |= UTF8PROC_DECOMPOSE;

  // The longest full decomposition or folding of one code point is shorter than this.
  std::array<utf8proc_int32_t, 32> expansion{};
  units.reserve(text.size());
  bool hasMarks = false;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t position = text.size() - rest.size();
    const std::int32_t codePoint = takeCodePoint(rest);
    if (codePoint < 0) {
      units.push_back({firstByteUnit + static_cast<unsigned char>(text[position]), true, position});
      continue;
    }
    int boundClass = UTF8PROC_BOUNDCLASS_START;
    const utf8proc_ssize_t count =
        utf8proc_decompose_char(codePoint, expansion.data(), expansion.size(),
                                static_cast<utf8proc_option_t>(options), &boundClass);
    for (utf8proc_ssize_t i = 0; i < count; ++i) {
      const utf8proc_int32_t unit = expansion[static_cast<std::size_t>(i)];
      // The iota below loses its being a mark when its case is folded, and belongs to its letter
      // all the same.
      const bool continues = decompose && !units.empty() &&
                             (continuesCharacter(units.back().codePoint, unit) ||
                              (i == 0 && continuesCharacter(units.back().codePoint, codePoint)));
      units.push_back({unit, i == 0 && !continues, position});
      hasMarks |= continues;
    }
  }
  if (units.empty())
    return;
  // Marks may begin the text, and another than the first be moved to its front.
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
