// Makes a predicate from any format, with any argument, and tests it on any name; the answer to
// "like" is compared with that of a plain matcher.
//
// An input is the format, the argument and the name, each ended by a newline but the last.

#include "platform/foundation/FoldedText.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "platform/metadata/LikePattern.h"
#include "platform/metadata/NSCompoundPredicate.h"
#include "platform/metadata/NSPredicate.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace searchsystem {

namespace {

class File final : public MetadataCandidate {
public:
  using MetadataCandidate::MetadataCandidate;
  std::optional<double> contentChangeDate() noexcept override { return 1; }
};

std::string_view takeLine(std::string_view &rest) {
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return line;
}

/// Whether a pattern without backslashes matches, by a table of all beginnings of both.
bool matchesPlainly(std::string_view pattern, std::string_view name, bool regardsCase) {
  const std::vector<FoldedText::Unit> wanted = FoldedText(pattern, !regardsCase, true).units;
  const std::vector<FoldedText::Unit> text = FoldedText(name, !regardsCase, true).units;
  const auto isBoundary = [&](std::size_t i) { return i == text.size() || text[i].isBoundary; };
  std::vector<bool> reached(text.size() + 1, false);
  reached[0] = true;
  for (const FoldedText::Unit &unit : wanted) {
    std::vector<bool> next(text.size() + 1, false);
    for (std::size_t i = 0; i <= text.size(); ++i) {
      if (!reached[i])
        continue;
      if (unit.codePoint == '*') {
        for (std::size_t end = i; isBoundary(i) && end <= text.size(); ++end)
          next[end] = next[end] || isBoundary(end);
      } else if (i < text.size() && unit.codePoint == '?') {
        std::size_t end = i + 1;
        while (!isBoundary(end))
          ++end;
        next[end] = next[end] || isBoundary(i);
      } else if (i < text.size() && unit.codePoint == text[i].codePoint) {
        next[i + 1] = true;
      }
    }
    reached = std::move(next);
  }
  return reached[text.size()];
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::string_view rest(reinterpret_cast<const char *>(data), size);
  if (size > 600 || rest.find('\0') != std::string_view::npos)
    return 0;
  const std::string_view format = takeLine(rest);
  const std::string_view argument = takeLine(rest);
  File file(rest);
  const auto text = NSString::create(argument);
  const auto date = NSDate::dateWithTimeIntervalSinceReferenceDate(1);
  for (const NSObject *const object :
       {static_cast<const NSObject *>(text.get()), static_cast<const NSObject *>(date.get())})
    if (const auto predicate = NSPredicate::predicateWithFormat(format, {object}))
      static_cast<void>(predicate->evaluateWithObject(file));
  if (const auto predicate = NSPredicate::predicateWithFormat(format)) {
    const auto both = NSCompoundPredicate::andPredicateWithSubpredicates({predicate, predicate});
    if (both->evaluateWithObject(file) != predicate->evaluateWithObject(file))
      std::abort();
  }
  if (argument.find('\\') == std::string_view::npos)
    for (const bool regardsCase : {false, true})
      if (LikePattern(argument, regardsCase).matches(rest) !=
          matchesPlainly(argument, rest, regardsCase))
        std::abort();
  return 0;
}
