#include "platform/metadata/MetadataIndex.h"

#include "platform/foundation/NeverDestroyed.h"
#include "platform/metadata/IndexDatabase.h"

#include <memory>
#include <string>

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
    IndexFault fault = IndexFault::None;
    const std::unique_ptr<IndexDatabase> index = IndexDatabase::openToRead(place, fault);
    if (!index)
      return fault == IndexFault::Missing ? 1 : 0;
    const std::optional<IndexDatabase::Totals> totals = index->totals();
    if (!totals)
      return 0;
    status->folders = totals->folders;
    status->entries = totals->entries;
    return 1;
  });
}

int PFMetadataIndexClear(void) {
  return atIndexPlace([](const IndexPlace &place) {
    return place.look() != IndexPlace::Finding::Impossible && place.removeFiles() ? 1 : 0;
  });
}
