#include "streams/CMemStream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace searchsystem {

namespace {

constexpr auto fits = std::in_range<std::int32_t, std::int64_t>;

void report(std::int64_t count, long *done) noexcept {
  if (done != nullptr)
    *done = static_cast<long>(count);
}

} // namespace

int CMemStream::Attach(unsigned char *buffer, long size) {
  Release();
  if (buffer == nullptr || size <= 0 || !fits(size))
    return 0;
  buffer_ = buffer;
  capacity_ = dataSize_ = static_cast<std::int32_t>(size);
  isAttached_ = true;
  return 1;
}

int CMemStream::CreateMemStream(long initialSize, long growthUnit, unsigned short progressMode,
                                StreamProgressCallback callback) {
  Release();
  if (growthUnit == 0 || !fits(growthUnit))
    return 0;
  if (initialSize != 0 && ReMakeBuffer(initialSize) != 1)
    return 0;
  progressCallback_ = callback;
  growthUnit_ = static_cast<std::int32_t>(growthUnit);
  progressMode_ = progressMode;
  return 1;
}

int CMemStream::ReleaseBuffer() {
  own_ = {};
  buffer_ = nullptr;
  capacity_ = dataSize_ = position_ = 0;
  return 1;
}

std::optional<std::int32_t> CMemStream::wholeUnits(std::int64_t size) const noexcept {
  if (!fits(size))
    return std::nullopt;
  const std::int64_t capacity = (size + growthUnit_ - 1) / growthUnit_ * growthUnit_;
  if (!fits(capacity))
    return std::nullopt;
  return static_cast<std::int32_t>(capacity);
}

bool CMemStream::enlarge(std::int32_t capacity, GrowingBlock &former) noexcept {
  const auto kept = static_cast<std::size_t>(capacity_), size = static_cast<std::size_t>(capacity);
  if (!own_.grow(isAttached_ ? 0 : kept, size, former))
    return false;
  if (std::exchange(isAttached_, false) && kept > 0)
    std::memcpy(own_.bytes(), buffer_, kept);
  buffer_ = reinterpret_cast<unsigned char *>(own_.bytes());
  capacity_ = capacity;
  return true;
}

bool CMemStream::growTo(std::int64_t need, GrowingBlock &former) noexcept {
  const std::optional<std::int32_t> capacity = wholeUnits(need);
  // Units below zero round down.
  return capacity && *capacity >= need && enlarge(*capacity, former);
}

int CMemStream::ReMakeBuffer(long size) {
  const std::optional<std::int32_t> capacity = wholeUnits(size);
  if (!capacity)
    return 0;
  if (*capacity > capacity_) {
    GrowingBlock former;
    return enlarge(*capacity, former) ? 1 : 0;
  }
  if (*capacity < dataSize_) {
    const std::int32_t first = std::max(*capacity, 0);
    if (first < dataSize_)
      std::memset(buffer_ + first, 0, static_cast<std::size_t>(dataSize_ - first));
    dataSize_ = *capacity;
  }
  position_ = std::min(position_, *capacity);
  return 1;
}

int CMemStream::Open(unsigned short mode) {
  openMode_ = mode;
  if (mode == streamWriteMode) {
    if (capacity_ > 0)
      std::memset(buffer_, 0, static_cast<std::size_t>(capacity_));
    dataSize_ = 0;
  }
  position_ = 0;
  isOpen_ = true;
  return 1;
}

int CMemStream::Close() {
  position_ = 0;
  isOpen_ = false;
  openMode_ = 0;
  return 1;
}

int CMemStream::Read(void *buffer, long count, long *done) {
  report(0, done);
  if (buffer == nullptr || !isOpen_ || (openMode_ & streamReadMode) == 0 || buffer_ == nullptr ||
      position_ < 0 || position_ >= dataSize_ || count <= 0)
    return 0;
  const long part = std::min<long>(count, dataSize_ - position_);
  std::memmove(buffer, buffer_ + position_, static_cast<std::size_t>(part));
  position_ += static_cast<std::int32_t>(part);
  report(part, done);
  return 1;
}

int CMemStream::Write(void *buffer, long count, long *done) {
  report(0, done);
  if (buffer == nullptr || !isOpen_ || (openMode_ & streamWriteMode) == 0)
    return 0;
  if (count == 0)
    return 1;
  if (count < 0 || position_ < 0)
    return 0;
  // Keeps the old block alive: the bytes may come from it.
  GrowingBlock former;
  long part = count;
  if (count > std::int64_t{capacity_} - position_) {
    if (isAttached_)
      part = std::max(capacity_ - position_, 0);
    else if (count > INT32_MAX || !growTo(std::int64_t{position_} + count, former))
      return 0;
  }
  if (part > 0)
    std::memmove(buffer_ + position_, buffer, static_cast<std::size_t>(part));
  position_ += static_cast<std::int32_t>(part);
  dataSize_ = std::max(dataSize_, position_);
  report(part, done);
  return part == count ? 1 : 0;
}

int CMemStream::Seek(long offset, unsigned short origin) {
  if (!isOpen_ || origin < streamSeekBegin || origin > streamSeekEnd || !fits(offset))
    return 0;
  if ((openMode_ & streamWriteMode) != 0 && !isAttached_)
    return seekToWrite(offset, origin);
  const std::int64_t target = origin == streamSeekBegin ? offset : std::int64_t{position_} + offset;
  if (target > dataSize_ || !fits(target))
    return 0;
  position_ = static_cast<std::int32_t>(target);
  return 1;
}

int CMemStream::seekToWrite(std::int64_t offset, unsigned short origin) noexcept {
  std::int64_t target = offset;
  if (origin == streamSeekCurrent)
    target += position_;
  else if (origin == streamSeekEnd)
    target += dataSize_;
  const std::int64_t end = std::max<std::int64_t>(dataSize_, target);
  if (origin == streamSeekEnd && target <= dataSize_)
    target += offset;
  GrowingBlock former;
  if (!fits(target) || (end > capacity_ && !growTo(end, former)))
    return 0;
  dataSize_ = static_cast<std::int32_t>(end);
  position_ = static_cast<std::int32_t>(target);
  return 1;
}

int CMemStream::Release() {
  CIOStream::Release();
  if (isOpen_)
    Close();
  isAttached_ = false;
  growthUnit_ = defaultGrowthUnit;
  return ReleaseBuffer();
}

} // namespace searchsystem
