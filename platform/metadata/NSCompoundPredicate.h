#pragma once

#include "platform/metadata/NSPredicate.h"

#include <utility>
#include <vector>

namespace searchsystem {

/// Joins several conditions into one. It first tests those that need the name only, then those that
/// need the disk, otherwise in the order given, and stops when the outcome is certain.
///
/// Ownership: counted; holds a reference to each part. Threads: any; immutable.
class NSCompoundPredicate final : public NSPredicate {
public:
  using Subpredicates = std::vector<Ref<const NSPredicate>>;

  /// Met when all of its parts are, and when it has none; null when a part is null. Throws
  /// `std::bad_alloc`.
  static Ref<const NSPredicate> andPredicateWithSubpredicates(Subpredicates subpredicates) {
    return join(std::move(subpredicates), false);
  }

  /// Met when any of its parts is, so never when it has none; null when a part is null. Throws
  /// `std::bad_alloc`.
  static Ref<const NSPredicate> orPredicateWithSubpredicates(Subpredicates subpredicates) {
    return join(std::move(subpredicates), true);
  }

  [[nodiscard]] bool evaluateWithObject(MetadataCandidate &file) const override;
  [[nodiscard]] bool needsNameOnly() const noexcept override { return needsNameOnly_; }
  [[nodiscard]] const TextPattern *textInName() const noexcept override;

private:
  NSCompoundPredicate(Subpredicates subpredicates, bool isOr);
  ~NSCompoundPredicate() override = default;

  static Ref<const NSPredicate> join(Subpredicates subpredicates, bool isOr);

  Subpredicates subpredicates_;
  const bool isOr_;
  bool needsNameOnly_ = true;
};

} // namespace searchsystem
