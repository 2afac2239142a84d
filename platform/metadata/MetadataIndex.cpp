#include "platform/metadata/MetadataIndex.h"

#include "platform/foundation/NeverDestroyed.h"
#include "platform/metadata/IndexDatabase.h"

#include <memory>
#include <string>

using namespace searchsystem;

const char *PFMetadataIndexGetPath(void) {
  static NeverDestroyed<std::string> path;
  try {
    const std::optional<IndexPlace> place = IndexPlace::current();
    if (!place)
      return nullptr;
    path.get() = place->file();
    return path.get().c_str();
  } catch (...) {
    return nullptr;
  }
}

int PFMetadataIndexGetStatus(PFMetadataIndexStatus *status) {
  *status = {};
  try {
    const std::optional<IndexPlace> place = IndexPlace::current();
    if (!place)
      return 1;
    status->size = place->sizeOnDisk();
    IndexFault fault = IndexFault::None;
    const std::unique_ptr<IndexDatabase> index = IndexDatabase::openToRead(*place, fault);
    if (!index)
      return fault == IndexFault::Missing ? 1 : 0;
    const std::optional<IndexDatabase::Totals> totals = index->totals();
    if (!totals)
      return 0;
    status->folders = totals->folders;
    status->entries = totals->entries;
    return 1;
  } catch (...) {
    return 0;
  }
}

int PFMetadataIndexClear(void) {
  try {
    const std::optional<IndexPlace> place = IndexPlace::current();
    if (!place)
      return 1;
    return place->look() != IndexPlace::Finding::Impossible && place->removeFiles() ? 1 : 0;
  } catch (...) {
    return 0;
  }
}
