#include "platform/metadata/NSPredicate.h"

#include "platform/foundation/NSClass.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/TextPattern.h"
#include "platform/metadata/LikePattern.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace searchsystem {

namespace {

// Callers look up whether the class exists; they make predicates from formats.
const NSClass predicateClass("NSPredicate", []() -> Ref<NSObject> { return nullptr; });

/// What `test` says about a file.
template <class Test> class Condition final : public NSPredicate {
public:
  Condition(bool needsNameOnly, Test test)
      : needsNameOnly_(needsNameOnly), test_(std::move(test)) {}

  bool evaluateWithObject(MetadataCandidate &file) const override { return test_(file); }
  bool needsNameOnly() const noexcept override { return needsNameOnly_; }

private:
  const bool needsNameOnly_;
  const Test test_;
};

/// The text occurs in the name.
class TextInName final : public NSPredicate {
public:
  TextInName(std::string_view text, unsigned options) : pattern_(text, options) {}

  bool evaluateWithObject(MetadataCandidate &file) const override {
    return pattern_.find(file.name).length != 0;
  }
  bool needsNameOnly() const noexcept override { return true; }
  const TextPattern *textInName() const noexcept override { return &pattern_; }

private:
  const TextPattern pattern_;
};

template <class Test> Ref<const NSPredicate> condition(bool needsNameOnly, Test test) {
  return Ref<const NSPredicate>::adopt(new Condition<Test>(needsNameOnly, std::move(test)));
}

/// Takes a part of a format from its rest, and blanks before it, if it comes next.
bool take(std::string_view &rest, std::string_view part) noexcept {
  std::string_view next = rest;
  next.remove_prefix(std::min(next.find_first_not_of(" \t\n\v\f\r"), next.size()));
  if (!equalIgnoringASCIICase(next.substr(0, part.size()), part))
    return false;
  rest = next.substr(part.size());
  return true;
}

bool isEmpty(std::string_view rest) noexcept { return take(rest, "") && rest.empty(); }

using Arguments = std::initializer_list<const NSObject *>;

/// The argument for `%@`, which must be all that is left of a format; null if it does not fit.
template <class Class>
const Class *argumentOf(std::string_view rest, Arguments arguments) noexcept {
  if (!take(rest, "%@") || !isEmpty(rest) || arguments.size() != 1)
    return nullptr;
  return dynamic_cast<const Class *>(*arguments.begin());
}

/// The text in quotes or the argument for `%@`, which must be all that is left of a format.
std::optional<std::string_view> textOf(std::string_view rest, Arguments arguments) noexcept {
  if (const auto *const argument = argumentOf<NSString>(rest, arguments))
    return argument->view();
  const bool isSingle = take(rest, "'");
  if (arguments.size() != 0 || (!isSingle && !take(rest, "\"")))
    return std::nullopt;
  const std::size_t end = rest.find(isSingle ? '\'' : '"');
  if (end == std::string_view::npos || !isEmpty(rest.substr(end + 1)))
    return std::nullopt;
  return rest.substr(0, end);
}

} // namespace

Ref<const NSPredicate> NSPredicate::predicateWithFormat(std::string_view format,
                                                        Arguments arguments) {
  std::string_view rest = format;
  if (take(rest, "kMDItemFSContentChangeDate")) {
    const bool isLater = take(rest, ">");
    if (!isLater && !take(rest, "<"))
      return nullptr;
    const auto *const argument = argumentOf<NSDate>(rest, arguments);
    if (argument == nullptr)
      return nullptr;
    const NSComparisonResult order = isLater ? NSOrderedDescending : NSOrderedAscending;
    return condition(
        false, [order, date = argument->timeIntervalSinceReferenceDate()](MetadataCandidate &file) {
          const std::optional<double> changed = file.contentChangeDate();
          return changed && NSDate::compareIntervals(*changed, date) == order;
        });
  }
  const bool isOnName = take(rest, "kMDItemFSName");
  const bool isLike = take(rest, "like");
  if (!isOnName || (!isLike && !take(rest, "in")))
    return nullptr;
  const bool regardsCase = !take(rest, "[c]");
  const std::optional<std::string_view> text = textOf(rest, arguments);
  if (!text)
    return nullptr;
  if (isLike)
    return condition(true,
                     [pattern = LikePattern(*text, regardsCase)](const MetadataCandidate &file) {
                       return pattern.matches(file.name);
                     });
  return Ref<const NSPredicate>::adopt(
      new TextInName(*text, regardsCase ? NSLiteralSearch : NSCaseInsensitiveSearch));
}

} // namespace searchsystem
