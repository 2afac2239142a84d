#include "streams/CFileStream.h"

#include "streams/ZeroWithoutMemory.h"

#include <algorithm>

namespace searchsystem {

namespace {

constexpr unsigned short modeBits = streamReadWriteMode;

int report(std::size_t transferred, long count, long *done) noexcept {
  if (done != nullptr)
    *done = static_cast<long>(transferred);
  return transferred == static_cast<std::size_t>(count) ? 1 : 0;
}

} // namespace

int CFileStream::CreateFileStream(const char *path, unsigned short progressMode,
                                  StreamProgressCallback callback) {
  Release();
  if (path == nullptr || *path == 0)
    return 0;
  return zeroWithoutMemory([&] {
    path_ = path;
    progressCallback_ = callback;
    progressMode_ = progressMode;
    return 1;
  });
}

int CFileStream::Open(unsigned short mode) {
  return zeroWithoutMemory([&] { return reopen(mode) ? 1 : 0; });
}

bool CFileStream::reopen(unsigned short mode) {
  if (path_.empty())
    return false;
  Close();
  file_ = openFile(path_.c_str(), mode & modeBits);
  if (file_ == nullptr)
    return false;
  openMode_ = mode;
  knownSize_ = sizeOfFile(file_.get()).value_or(0);
  return true;
}

int CFileStream::Close() {
  if (file_ == nullptr)
    return 0;
  file_.reset();
  openMode_ = 0;
  return 1;
}

int CFileStream::Read(void *buffer, long count, long *done) {
  if (done != nullptr)
    *done = 0;
  if (buffer == nullptr || file_ == nullptr || count < 0)
    return 0;
  turnToReading(file_.get());
  return report(readFile(file_.get(), buffer, static_cast<std::size_t>(count)), count, done);
}

int CFileStream::Write(void *buffer, long count, long *done) {
  if (done != nullptr)
    *done = 0;
  if (buffer == nullptr || file_ == nullptr || count < 0)
    return 0;
  turnToWriting(file_.get());
  return report(std::fwrite(buffer, 1, static_cast<std::size_t>(count), file_.get()), count, done);
}

int CFileStream::Seek(long offset, unsigned short origin) {
  if (file_ == nullptr)
    return 0;
  const bool isReadOnly = (openMode_ & streamWriteMode) == 0;
  isOldSizeEnough_ = isReadOnly;
  isSizeUnknown_ = false;
  const long size = std::max(GetSize(), 0L);
  isOldSizeEnough_ = false;
  const long position = Tell();
  if (origin < streamSeekBegin || origin > streamSeekEnd || isSizeUnknown_)
    return 0;
  if (isReadOnly)
    return seekTo(offset);
  const long base = origin == streamSeekBegin ? 0 : origin == streamSeekCurrent ? position : size;
  long target = 0;
  if (__builtin_add_overflow(base, offset, &target))
    return 0;
  return target <= size ? seekTo(target) : appendZeros(file_.get(), target - size) ? 1 : 0;
}

int CFileStream::seekTo(long position) {
  if (position < 0 || position != std::ftell(file_.get()))
    return std::fseek(file_.get(), position, SEEK_SET) == 0 ? 1 : 0;
  // Already there: this saves a system call. Like a seek, it permits reading on in a file that has
  // grown since its end was reached.
  std::clearerr(file_.get());
  return 1;
}

long CFileStream::Tell() {
  const long position = file_ == nullptr ? 0 : std::ftell(file_.get());
  return std::max(position, 0L);
}

long CFileStream::GetSize() {
  if (file_ == nullptr)
    return 0;
  if (isOldSizeEnough_)
    return knownSize_;
  const std::optional<long> size = sizeOfFile(file_.get());
  isSizeUnknown_ = !size;
  return knownSize_ = size.value_or(0);
}

int CFileStream::Release() {
  CIOStream::Release();
  if (file_ != nullptr)
    Close();
  path_.clear();
  return 1;
}

} // namespace searchsystem
