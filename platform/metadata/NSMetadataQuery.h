#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/metadata/NSMetadataItem.h"
#include "platform/metadata/NSPredicate.h"

#include <cstddef>
#include <string_view>

class MetadataGathering;

/// Further results are there; posted with the query as its object, never from inside `startQuery`.
inline constexpr std::string_view NSMetadataQueryGatheringProgressNotification =
    "NSMetadataQueryGatheringProgressNotification";

/// All results are there; posted once for each start that is not stopped, after the last progress.
inline constexpr std::string_view NSMetadataQueryDidFinishGatheringNotification =
    "NSMetadataQueryDidFinishGatheringNotification";

/// Finds the files below some folders that meet a predicate: what a walk of those folders would
/// meet at that moment, every visible entry that is no folder and exists, not below a link, a
/// package, a hidden folder or the root of a mounted file system. All this is judged below the
/// folders, never of them. It gathers on threads of its own; an index in the user's cache folder
/// makes it quick, and costs no more than its help when it cannot be used.
///
/// Results become visible with the progress notifications. Each announces at least one; while it is
/// being posted, `resultCount` grows by what has been gathered as the results before are read, for
/// about 5 ms. So the main thread is kept busy for that long at a time, whatever the handler does
/// with a result.
///
/// Ownership: counted; holds references to predicate, scopes and results. The last reference is
/// given back on the main thread. Threads: main only.
class NSMetadataQuery final : public NSObject {
public:
  /// Throws `std::bad_alloc`.
  static Ref<NSMetadataQuery> create();

  /// Whom the query works for, borrowed. It is never called.
  void setDelegate(NSObject *delegate) noexcept { delegate_ = delegate; }
  [[nodiscard]] NSObject *delegate() const noexcept { return delegate_; }

  /// The condition that results meet. It counts from the next start on.
  void setPredicate(Ref<const NSPredicate> predicate) noexcept;

  /// The folders that are searched, as paths (`NSString`), each with everything below it. A folder
  /// that does not exist is looked for once more without the blanks around its path. It counts from
  /// the next start on.
  void setSearchScopes(Ref<const NSArray> scopes) noexcept;

  /// Forgets earlier results and begins to gather: 1. 0, and nothing has changed, while the query
  /// gathers already, without a predicate, without scopes or with one that is no path, and when
  /// memory is short. Posts nothing before it returns.
  [[nodiscard]] char startQuery() noexcept;

  /// Ends the gathering, if there is one: what has been announced stays, all else is dropped, and
  /// nothing more is posted.
  void stopQuery() noexcept;

  /// 1 from the start until the finish is posted, or the query stopped.
  [[nodiscard]] char isGathering() const noexcept { return isGathering_ ? 1 : 0; }

  /// How many results are visible.
  [[nodiscard]] std::size_t resultCount() noexcept;

  /// The result at `index`, which must be below `resultCount()`. Its path carries the scope without
  /// links. Throws `std::bad_alloc`.
  [[nodiscard]] Ref<const NSMetadataItem> resultAtIndex(std::size_t index) const;

private:
  friend class MetadataGathering;

  NSMetadataQuery() noexcept;
  ~NSMetadataQuery() override;

  NSObject *delegate_ = nullptr;
  Ref<const NSPredicate> predicate_;
  Ref<const NSArray> scopes_;
  /// The last one, which holds the results.
  Ref<MetadataGathering> gathering_;
  bool isGathering_ = false;
};
