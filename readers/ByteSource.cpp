#include "readers/ByteSource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace searchsystem {

FileSource::FileSource(int descriptor) noexcept : descriptor_(descriptor), size_(0) {
  struct stat status {};
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0)
    size_ = static_cast<std::uint64_t>(status.st_size);
}

std::size_t FileSource::read(std::uint64_t offset, char *room, std::size_t count) noexcept {
  if (offset >= size_)
    return 0;
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - offset));
  std::size_t done = 0;
  while (done < count) {
    const ssize_t got =
        pread(descriptor_, room + done, count - done, static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR)
      continue;
    if (got <= 0)
      break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

std::size_t MemorySource::read(std::uint64_t offset, char *room, std::size_t count) noexcept {
  if (offset >= bytes_.size())
    return 0;
  count = std::min(count, bytes_.size() - static_cast<std::size_t>(offset));
  std::memcpy(room, bytes_.data() + offset, count);
  return count;
}

} // namespace searchsystem
