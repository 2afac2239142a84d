#include "platform/foundation/FileBeginning.h"

#include "platform/foundation/SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <unistd.h>

namespace {

/// Reads until `size` bytes are there or the file ends; how many there are, or -1.
ssize_t readWhole(int file, char *bytes, std::size_t size) noexcept {
  std::size_t count = 0;
  while (count < size) {
    const ssize_t result = systemCalls().read(file, bytes + count, size - count);
    if (result == 0)
      break;
    if (result > 0)
      count += static_cast<std::size_t>(result);
    else if (errno != EINTR)
      return -1;
  }
  return static_cast<ssize_t>(count);
}

} // namespace

Ref<const NSData> beginningOfFile(FileItem &item, std::size_t longest) noexcept {
  const std::optional<FileStatus> &status = item.status();
  if (!status || status->size == 0)
    return nullptr;
  const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(status->size, longest));
  Ref<NSData> data;
  try {
    // Of one size for all files, so that one buffer serves them all.
    data = NSData::withCapacity(longest);
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
  const int file = item.openRegularFile();
  if (file < 0)
    return nullptr;
  const ssize_t count = readWhole(file, data->mutableBytes(), size);
  close(file);
  if (count <= 0)
    return nullptr;
  data->setLength(static_cast<std::size_t>(count));
  return data;
}
