#include "platform/foundation/FileBeginning.h"

#include "platform/foundation/SystemCalls.h"
#include "platform/foundation/TryTwice.h"

#include <algorithm>
#include <unistd.h>

namespace {

/// Closes an open file.
class Closing {
public:
  explicit Closing(int file) noexcept : file_(file) {}
  ~Closing() { close(file_); }
  Closing(const Closing &) = delete;
  Closing &operator=(const Closing &) = delete;

private:
  const int file_;
};

} // namespace

Ref<const NSData> beginningOfFile(FileItem &item, std::size_t longest) noexcept {
  const int file = item.openRegularFile();
  if (file < 0)
    return nullptr;
  const Closing closing(file);
  const std::optional<FileStatus> &status = item.status();
  if (!status || status->size == 0)
    return nullptr;
  // Of one size for all files, so that one buffer serves them all.
  Ref<NSData> data;
  if (!tryTwice([&] { data = NSData::withCapacity(longest); }))
    return nullptr;
  const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(status->size, longest));
  const std::size_t count = readFully(file, data->mutableBytes(), size);
  data->setLength(count);
  return count != 0 ? data : nullptr;
}
