#include "hosts/ssfind/IndexTasks.h"

#include "hosts/ssfind/Terminal.h"
#include "hosts/ssfind/VisibleText.h"
#include "platform/metadata/MetadataIndex.h"

#include <unistd.h>

namespace searchsystem::ssfind {

std::optional<std::string> indexStatus(StandardError &errors) {
  const char *const path = PFMetadataIndexGetPath();
  if (path == nullptr) {
    errors.report("there is no index: neither XDG_CACHE_HOME nor HOME names a folder for it");
    return std::nullopt;
  }
  PFMetadataIndexStatus status{};
  if (PFMetadataIndexGetStatus(&status) != 1) {
    errors.report(visible(path) + ": the index cannot be read at present");
    return std::nullopt;
  }
  return "index    " + (isTerminal(STDOUT_FILENO) ? visible(path) : path) + "\nsize     " +
         std::to_string(status.size) + " bytes\nfolders  " + std::to_string(status.folders) +
         "\nentries  " + std::to_string(status.entries) + '\n';
}

bool clearIndex(StandardError &errors) {
  if (PFMetadataIndexClear() == 1)
    return true;
  const char *const path = PFMetadataIndexGetPath();
  errors.report((path != nullptr ? visible(path) + ": " : "") + "the index cannot be removed");
  return false;
}

} // namespace searchsystem::ssfind
