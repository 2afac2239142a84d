#include "platform/foundation/FileBeginning.h"

#include "platform/foundation/SystemCalls.h"
#include "platform/foundation/TryTwice.h"

#include <algorithm>
#include <utility>

namespace searchsystem {

namespace {

bool isSet(const std::atomic<char> *flag) noexcept { return flag != nullptr && *flag != 0; }

} // namespace

std::optional<FileBeginning> FileBeginning::open(FileItem &item,
                                                 const std::atomic<char> *isStopped) noexcept {
  if (isSet(isStopped))
    return std::nullopt;
  FileDescriptor file = item.openRegularFile();
  if (!file)
    return std::nullopt;
  const std::optional<FileStatus> &status = item.status();
  std::optional<FileBeginning> beginning =
      ofOpenFile(file.number(), status ? status->size : 0, isStopped);
  if (beginning)
    beginning->ownFile_ = std::move(file);
  return beginning;
}

std::optional<FileBeginning>
FileBeginning::ofOpenFile(int file, std::uint64_t size,
                          const std::atomic<char> *isStopped) noexcept {
  // The same size for all files, so that one buffer serves them all.
  Ref<NSData> data;
  if (size == 0 || isSet(isStopped) || !tryTwice([&] { data = NSData::withCapacity(mostBytes); }))
    return std::nullopt;
  const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(size, mostBytes));
  return FileBeginning(file, most, std::move(data), isStopped);
}

std::size_t FileBeginning::readPart(std::size_t offset, std::size_t size) noexcept {
  if (size == 0)
    return 0;
  size = std::min(size, size_ - offset);
  const std::size_t end = (offset + size + stepSize - 1) / stepSize;
  for (std::size_t step = offset / stepSize; step < end; ++step) {
    std::size_t last = step;
    while (last < end && !isRead_[last])
      ++last;
    if (last != step)
      readSteps(step, last);
    step = last;
  }
  return offset < size_ ? std::min(size, size_ - offset) : 0;
}

void FileBeginning::readSteps(std::size_t begin, std::size_t end) noexcept {
  std::size_t place = begin * stepSize;
  const std::size_t stop = std::min(end * stepSize, size_);
  for (; begin < end; ++begin)
    isRead_.set(begin);
  while (place < stop) {
    const ssize_t count =
        isSet(isStopped_)
            ? -1
            : uninterrupted(&SystemCalls::readAt, file_, data_->mutableBytes() + place,
                            stop - place, static_cast<off_t>(place));
    if (count <= 0) {
      size_ = count < 0 ? 0 : place;
      return;
    }
    place += static_cast<std::size_t>(count);
  }
}

Ref<const NSData> FileBeginning::all() &&noexcept {
  const std::size_t count = part(0, size_).size();
  data_->setLength(count);
  return count != 0 ? std::move(data_) : nullptr;
}

} // namespace searchsystem
