#pragma once

#include "platform/metadata/NSPredicate.h"

#include <vector>

/// Several conditions joined into one. Those that the name decides are tested before those that
/// need a look at the disk; otherwise the order is kept, and what no longer matters is not tested.
///
/// Ownership: counted; holds a reference to each part. Threads: any; immutable.
class NSCompoundPredicate final : public NSPredicate {
public:
  using Subpredicates = std::vector<Ref<const NSPredicate>>;

  /// Met when all of the parts are, also when there is none; null when a part is null. Throws
  /// `std::bad_alloc`.
  static Ref<const NSPredicate> andPredicateWithSubpredicates(Subpredicates subpredicates);

  /// Met when any of the parts is, hence never when there is none; null when a part is null. Throws
  /// `std::bad_alloc`.
  static Ref<const NSPredicate> orPredicateWithSubpredicates(Subpredicates subpredicates);

  [[nodiscard]] bool evaluateWithObject(MetadataCandidate &file) const override;
  [[nodiscard]] bool needsNameOnly() const noexcept override { return needsNameOnly_; }

private:
  NSCompoundPredicate(Subpredicates subpredicates, bool isOr);
  ~NSCompoundPredicate() override = default;

  static Ref<const NSPredicate> join(Subpredicates subpredicates, bool isOr);

  Subpredicates subpredicates_;
  const bool isOr_;
  bool needsNameOnly_ = true;
};
