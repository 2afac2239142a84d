#include "hosts/ssfind/EntryStatus.h"

#include <sys/stat.h>

namespace searchsystem::ssfind {

std::optional<EntryStatus> statusOf(const char *path) noexcept {
  struct stat status {};
  if (lstat(path, &status) != 0)
    return std::nullopt;
  return EntryStatus{static_cast<std::uint64_t>(status.st_size), status.st_mtim};
}

} // namespace searchsystem::ssfind
