#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/metadata/NSMetadataItem.h"
#include "platform/metadata/NSMetadataQueryNotifications.h"
#include "platform/metadata/NSPredicate.h"

#include <cstddef>
#include <utility>

namespace searchsystem {

class MetadataGathering;

/// Finds the files below some folders that meet a predicate: every visible entry that a walk of
/// those folders would find, except folders, dangling links, and anything below a link, a package,
/// a hidden folder or the root of a mounted file system. These rules apply below the folders, not
/// to the folders themselves. It gathers on its own threads; an index in the user's cache folder
/// makes it fast. Without the index only speed is lost.
///
/// Results become visible with the progress notifications, at least one with each. While one is
/// being posted, reading the last result makes the next visible, for about 5 ms; so the main thread
/// is busy that long at a time, however long the handler takes for a result.
///
/// Ownership: counted; holds references to predicate, scopes and results. The last reference is
/// released on the main thread. Threads: main only.
class NSMetadataQuery final : public NSObject {
public:
  /// Throws `std::bad_alloc`.
  static Ref<NSMetadataQuery> create();

  /// The object that the query works for, borrowed. It is never called.
  void setDelegate(NSObject *delegate) noexcept { delegate_ = delegate; }
  [[nodiscard]] NSObject *delegate() const noexcept { return delegate_; }

  /// The condition on results. It takes effect at the next start.
  void setPredicate(Ref<const NSPredicate> predicate) noexcept {
    predicate_ = std::move(predicate);
  }

  /// The folders that are searched, as paths (`NSString`), each with everything below it. If one
  /// does not exist, the query tries its path without the blanks around it. They take effect at the
  /// next start.
  void setSearchScopes(Ref<const NSArray> scopes) noexcept { scopes_ = std::move(scopes); }

  /// Forgets earlier results, begins to gather and returns 1. Returns 0, and changes nothing, when
  /// the query is gathering, has no predicate, no scopes or a scope that is not a path, or memory
  /// is short. Posts nothing before it returns.
  [[nodiscard]] char startQuery() noexcept;

  /// Stops gathering: visible results stay, the others are dropped, and nothing more is posted.
  void stopQuery() noexcept;

  /// 1 from the start until the finish is posted or the query is stopped.
  [[nodiscard]] char isGathering() const noexcept;

  /// How many results are visible.
  [[nodiscard]] std::size_t resultCount() noexcept;

  /// The result at `index`, which must be below `resultCount()`. Its path begins with the scope's,
  /// links resolved. Throws `std::bad_alloc`.
  [[nodiscard]] Ref<const NSMetadataItem> resultAtIndex(std::size_t index) const;

private:
  NSMetadataQuery() noexcept;
  ~NSMetadataQuery() override;

  NSObject *delegate_ = nullptr;
  Ref<const NSPredicate> predicate_;
  Ref<const NSArray> scopes_;
  /// Of the last start; it holds the results.
  Ref<MetadataGathering> gathering_;
};

} // namespace searchsystem
