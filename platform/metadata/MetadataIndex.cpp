#include "platform/metadata/MetadataIndex.h"

#include "platform/foundation/NeverDestroyed.h"
#include "platform/metadata/IndexMerge.h"

#include <memory>
#include <string>
#include <utility>

namespace searchsystem {

namespace {

/// What `task` returns for the place of the index; 1 if there is none, 0 if memory is short.
template <class Task> int atIndexPlace(Task task) noexcept {
  try {
    const std::optional<IndexPlace> place = IndexPlace::current();
    return place ? task(*place) : 1;
  } catch (...) {
    return 0;
  }
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

const char *PFMetadataIndexGetPath(void) {
  static NeverDestroyed<std::string> path;
  atIndexPlace([](const IndexPlace &place) {
    path.get() = place.file();
    return 1;
  });
  return path.get().empty() ? nullptr : path.get().c_str();
}

int PFMetadataIndexGetStatus(PFMetadataIndexStatus *status) {
  *status = {};
  return atIndexPlace([status](const IndexPlace &place) {
    status->size = place.sizeOnDisk();
    if (place.look() == IndexPlace::Finding::Nothing)
      return 1;
    bool isBroken = false;
    const std::shared_ptr<const IndexFile> file = IndexFile::open(place, isBroken);
    if (!file)
      return 0;
    IndexMerge index({file}, "");
    for (std::string last; index.next();) {
      if (!index.record().isWhole(index.path()))
        continue;
      status->folders +=
          std::exchange(last, index.path()) == index.path() && status->folders > 0 ? 0 : 1;
      status->entries += index.record().facts().entries;
    }
    return 1;
  });
}

int PFMetadataIndexClear(void) {
  return atIndexPlace([](const IndexPlace &place) {
    return place.look() != IndexPlace::Finding::Impossible && place.removeFiles() ? 1 : 0;
  });
}
