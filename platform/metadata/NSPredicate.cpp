#include "platform/metadata/NSPredicate.h"

#include "platform/foundation/NSClass.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/TextPattern.h"
#include "platform/metadata/LikePattern.h"
#include "platform/metadata/PredicateFormat.h"

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

template <class Test> Ref<const NSPredicate> condition(bool needsNameOnly, Test test) {
  return Ref<const NSPredicate>::adopt(new Condition<Test>(needsNameOnly, std::move(test)));
}

} // namespace

Ref<const NSPredicate>
NSPredicate::predicateWithFormat(std::string_view format,
                                 std::initializer_list<const NSObject *> arguments) {
  using Operator = PredicateFormat::Operator;
  const std::optional<PredicateFormat> parsed = PredicateFormat::parse(format);
  if (!parsed || arguments.size() != (parsed->text ? 0U : 1U))
    return nullptr;
  const NSObject *const argument = parsed->text ? nullptr : *arguments.begin();
  if (parsed->isOnDate()) {
    const auto *const given = dynamic_cast<const NSDate *>(argument);
    if (given == nullptr)
      return nullptr;
    const NSComparisonResult order =
        parsed->comparison == Operator::Later ? NSOrderedDescending : NSOrderedAscending;
    return condition(
        false, [order, date = given->timeIntervalSinceReferenceDate()](MetadataCandidate &file) {
          const std::optional<double> changed = file.contentChangeDate();
          return changed && NSDate::compareIntervals(*changed, date) == order;
        });
  }
  const auto *const string = dynamic_cast<const NSString *>(argument);
  if (!parsed->text && string == nullptr)
    return nullptr;
  const std::string_view text = parsed->text ? std::string_view(*parsed->text) : string->view();
  if (parsed->comparison == Operator::Like)
    return condition(
        true, [pattern = LikePattern(text, parsed->regardsCase)](const MetadataCandidate &file) {
          return pattern.matches(file.name);
        });
  const unsigned options = parsed->regardsCase ? NSLiteralSearch : NSCaseInsensitiveSearch;
  return condition(true, [pattern = TextPattern(text, options)](const MetadataCandidate &file) {
    return pattern.find(file.name).length != 0;
  });
}

} // namespace searchsystem
