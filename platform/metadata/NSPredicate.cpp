#include "platform/metadata/NSPredicate.h"

#include "platform/foundation/NSClass.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/TextPattern.h"
#include "platform/metadata/LikePattern.h"
#include "platform/metadata/PredicateFormat.h"

namespace {

// It is looked up to be there; predicates are made from formats.
const NSClass predicateClass("NSPredicate", []() -> Ref<NSObject> { return nullptr; });

class NameIsLike final : public NSPredicate {
public:
  NameIsLike(std::string_view text, bool regardsCase) : pattern_(text, regardsCase) {}

  bool evaluateWithObject(MetadataCandidate &file) const override {
    return pattern_.matches(file.name);
  }
  bool needsNameOnly() const noexcept override { return true; }

private:
  const LikePattern pattern_;
};

class NameHolds final : public NSPredicate {
public:
  NameHolds(std::string_view text, bool regardsCase)
      : text_(text, regardsCase ? NSLiteralSearch : NSCaseInsensitiveSearch) {}

  bool evaluateWithObject(MetadataCandidate &file) const override {
    return text_.find(file.name).length != 0;
  }
  bool needsNameOnly() const noexcept override { return true; }

private:
  const TextPattern text_;
};

class DateIs final : public NSPredicate {
public:
  DateIs(NSComparisonResult order, const NSDate &date) noexcept
      : order_(order), date_(date.timeIntervalSinceReferenceDate()) {}

  bool evaluateWithObject(MetadataCandidate &file) const override {
    const std::optional<double> changed = file.contentChangeDate();
    return changed && NSDate::compareIntervals(*changed, date_) == order_;
  }
  bool needsNameOnly() const noexcept override { return false; }

private:
  const NSComparisonResult order_;
  const double date_;
};

} // namespace

Ref<const NSPredicate>
NSPredicate::predicateWithFormat(std::string_view format,
                                 std::initializer_list<const NSObject *> arguments) {
  using Operator = PredicateFormat::Operator;
  const std::optional<PredicateFormat> parsed = PredicateFormat::parse(format);
  if (!parsed || arguments.size() != (parsed->text ? 0U : 1U))
    return nullptr;
  const NSObject *const argument = parsed->text ? nullptr : *arguments.begin();
  if (parsed->attribute == PredicateFormat::Attribute::ContentChangeDate) {
    const auto *const date = dynamic_cast<const NSDate *>(argument);
    const NSComparisonResult order =
        parsed->comparison == Operator::Later ? NSOrderedDescending : NSOrderedAscending;
    return date != nullptr ? Ref<const NSPredicate>::adopt(new DateIs(order, *date)) : nullptr;
  }
  const auto *const string = dynamic_cast<const NSString *>(argument);
  if (!parsed->text && string == nullptr)
    return nullptr;
  const std::string_view text = parsed->text ? std::string_view(*parsed->text) : string->view();
  if (parsed->comparison == Operator::Like)
    return Ref<const NSPredicate>::adopt(new NameIsLike(text, parsed->regardsCase));
  return Ref<const NSPredicate>::adopt(new NameHolds(text, parsed->regardsCase));
}
