#include "platform/foundation/FileBeginning.h"

#include "platform/foundation/SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <unistd.h>

namespace {

/// An open file.
class Reader {
public:
  explicit Reader(int file) noexcept : file_(file) {}
  ~Reader() { close(file_); }
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;

  /// Reads until `size` bytes are there or the file ends; how many there are, 0 after a failure.
  std::size_t read(char *bytes, std::size_t size) const noexcept {
    std::size_t count = 0;
    while (count < size) {
      const ssize_t result = systemCalls().read(file_, bytes + count, size - count);
      if (result == 0)
        break;
      if (result > 0)
        count += static_cast<std::size_t>(result);
      else if (errno != EINTR)
        return 0;
    }
    return count;
  }

private:
  const int file_;
};

} // namespace

Ref<const NSData> beginningOfFile(FileItem &item, std::size_t longest) noexcept {
  const int file = item.openRegularFile();
  if (file < 0)
    return nullptr;
  const Reader reader(file);
  const std::optional<FileStatus> &status = item.status();
  if (!status || status->size == 0)
    return nullptr;
  try {
    // Of one size for all files, so that one buffer serves them all.
    const Ref<NSData> data = NSData::withCapacity(longest);
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(status->size, longest));
    const std::size_t count = reader.read(data->mutableBytes(), size);
    data->setLength(count);
    return count != 0 ? data : nullptr;
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}
