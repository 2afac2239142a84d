#include "platform/metadata/NSCompoundPredicate.h"

#include "platform/foundation/NSClass.h"

#include <algorithm>
#include <utility>

namespace searchsystem {

namespace {

const NSClass compoundPredicateClass("NSCompoundPredicate",
                                     []() -> Ref<NSObject> { return nullptr; });

} // namespace

NSCompoundPredicate::NSCompoundPredicate(Subpredicates subpredicates, bool isOr)
    : subpredicates_(std::move(subpredicates)), isOr_(isOr) {
  const auto rest =
      std::stable_partition(subpredicates_.begin(), subpredicates_.end(),
                            [](const auto &predicate) { return predicate->needsNameOnly(); });
  needsNameOnly_ = rest == subpredicates_.end();
}

Ref<const NSPredicate> NSCompoundPredicate::join(Subpredicates subpredicates, bool isOr) {
  const auto isNull = [](const auto &predicate) { return predicate == nullptr; };
  if (std::any_of(subpredicates.begin(), subpredicates.end(), isNull))
    return nullptr;
  return Ref<const NSPredicate>::adopt(new NSCompoundPredicate(std::move(subpredicates), isOr));
}

const TextPattern *NSCompoundPredicate::textInName() const noexcept {
  if (isOr_ && subpredicates_.size() != 1)
    return nullptr;
  for (const Ref<const NSPredicate> &predicate : subpredicates_)
    if (const TextPattern *const text = predicate->textInName())
      return text;
  return nullptr;
}

bool NSCompoundPredicate::evaluateWithObject(MetadataCandidate &file) const {
  for (const Ref<const NSPredicate> &predicate : subpredicates_)
    if (predicate->evaluateWithObject(file) == isOr_)
      return isOr_;
  return !isOr_;
}

} // namespace searchsystem
