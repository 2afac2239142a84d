#include "platform/metadata/NSMetadataQuery.h"

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/MountPoints.h"
#include "platform/foundation/NSClass.h"
#include "platform/foundation/TryTwice.h"
#include "platform/metadata/MetadataGathering.h"
#include "platform/metadata/ProcessRights.h"

#include <cassert>
#include <string>
#include <utility>

namespace searchsystem {

namespace {

const NSClass queryClass("NSMetadataQuery",
                         []() -> Ref<NSObject> { return NSMetadataQuery::create(); });

/// A task for each path in `scopes`; none if one of them is not a path. Throws `std::bad_alloc`.
FolderQueue::Tasks tasksOf(const NSArray *scopes) {
  FolderQueue::Tasks tasks;
  for (std::size_t i = 0; scopes != nullptr && i < scopes->count(); ++i) {
    const auto *const path = dynamic_cast<const NSString *>(scopes->objectAtIndex(i));
    if (path == nullptr)
      return {};
    tasks.push_back({.kind = FolderTask::Kind::Scope, .path = std::string(path->view())});
  }
  return tasks;
}

} // namespace

NSMetadataQuery::NSMetadataQuery() noexcept = default;

NSMetadataQuery::~NSMetadataQuery() { stopQuery(); }

Ref<NSMetadataQuery> NSMetadataQuery::create() {
  return Ref<NSMetadataQuery>::adopt(new NSMetadataQuery);
}

char NSMetadataQuery::startQuery() noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (isGathering() != 0 || !predicate_)
    return 0;
  bool arePaths = false;
  const bool isReady = tryTwice([&] {
    FolderQueue::Tasks scopes = tasksOf(scopes_.get());
    arePaths = !scopes.empty();
    if (!arePaths)
      return;
    ProcessRights::learn();
    MountPoints::forget();
    gathering_ =
        MetadataGathering::create(*this, predicate_, std::move(scopes), IndexPlace::current());
  });
  if (!isReady || !arePaths)
    return 0;
  gathering_->start();
  return 1;
}

void NSMetadataQuery::stopQuery() noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (isGathering() != 0)
    gathering_->stop();
}

char NSMetadataQuery::isGathering() const noexcept {
  return gathering_ && gathering_->isActive() ? 1 : 0;
}

std::size_t NSMetadataQuery::resultCount() noexcept {
  return gathering_ ? gathering_->visibleCount() : 0;
}

Ref<const NSMetadataItem> NSMetadataQuery::resultAtIndex(std::size_t index) const {
  return NSMetadataItem::create(gathering_->pathAtIndex(index));
}

} // namespace searchsystem
