// Looks for one text in another, any bytes both, and compares the answer with that of a plain
// search through the folded code points.

#include "platform/foundation/FoldedText.h"
#include "platform/foundation/TextPattern.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace searchsystem {

namespace {

using Units = std::vector<FoldedText::Unit>;

NSRange findPlainly(const Units &pattern, const Units &text, std::size_t textSize) {
  if (pattern.empty())
    return {};
  const auto isSame = [](const FoldedText::Unit &a, const FoldedText::Unit &b) {
    return a.codePoint == b.codePoint;
  };
  for (std::size_t begin = 0; begin + pattern.size() <= text.size(); ++begin) {
    const std::size_t end = begin + pattern.size();
    const bool endsCharacter = end == text.size() || text[end].isBoundary;
    if (text[begin].isBoundary && endsCharacter &&
        std::equal(pattern.begin(), pattern.end(), &text[begin], isSame)) {
      const std::size_t sourceEnd = end < text.size() ? text[end].source : textSize;
      return {text[begin].source, sourceEnd - text[begin].source};
    }
  }
  return {};
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size < 2)
    return 0;
  const unsigned options = data[0] & (NSCaseInsensitiveSearch | NSLiteralSearch);
  const std::string_view bytes(reinterpret_cast<const char *>(data + 2), size - 2);
  const std::size_t patternSize = std::min<std::size_t>(data[1], bytes.size());
  const std::string_view sought = bytes.substr(0, patternSize);
  const std::string_view text = bytes.substr(patternSize);

  const bool foldCase = (options & NSCaseInsensitiveSearch) != 0;
  const bool decompose = (options & NSLiteralSearch) == 0;
  const NSRange expected = findPlainly(FoldedText(sought, foldCase, decompose).units,
                                       FoldedText(text, foldCase, decompose).units, text.size());
  const NSRange found = TextPattern(sought, options).find(text);
  if (found.length != expected.length || (found.length != 0 && found.location != expected.location))
    std::abort();
  return 0;
}
