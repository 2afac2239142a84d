#include "streams/CFileStream.h"

#include "streams/MemoryShortage.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

namespace {

constexpr unsigned short modeBits = streamReadWriteMode;

bool isSum(long a, long b) noexcept { return b < 0 ? a >= LONG_MIN - b : a <= LONG_MAX - b; }

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
  const std::size_t size = std::strlen(path) + 1;
  path_.reset(new (std::nothrow) char[size]);
  if (path_ == nullptr) {
    MemoryShortage::note();
    return 0;
  }
  std::memcpy(path_.get(), path, size);
  progressCallback_ = callback;
  progressMode_ = progressMode;
  return 1;
}

int CFileStream::Open(unsigned short mode) {
  if (path_ == nullptr)
    return 0;
  Close();
  file_ = openFile(path_.get(), mode & modeBits);
  if (file_ == nullptr)
    return 0;
  openMode_ = mode;
  knownSize_ = sizeOfFile(file_.get()).value_or(0);
  return 1;
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
    return seekToRead(offset);
  switch (origin) {
  case streamSeekBegin:
    return offset <= size ? seekTo(offset, SEEK_SET) : append(offset - size);
  case streamSeekCurrent:
    if (!isSum(position, offset))
      return 0;
    return position + offset <= size ? seekTo(offset, SEEK_CUR) : append(position + offset - size);
  default:
    if (offset <= 0)
      return seekTo(offset, SEEK_END);
    return append(offset);
  }
}

int CFileStream::seekTo(long offset, int whence) {
  return std::fseek(file_.get(), offset, whence) == 0 ? 1 : 0;
}

int CFileStream::seekToRead(long offset) {
  if (offset < 0 || offset != std::ftell(file_.get()))
    return seekTo(offset, SEEK_SET);
  // Already there: this saves a call of the system. As a seek would, it lets a file that has grown
  // since its end was met be read on.
  std::clearerr(file_.get());
  return 1;
}

int CFileStream::append(long count) { return appendZeros(file_.get(), count) ? 1 : 0; }

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
  path_.reset();
  return 1;
}
