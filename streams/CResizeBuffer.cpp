#include "streams/CResizeBuffer.h"

#include <algorithm>
#include <cstring>

namespace searchsystem {

namespace {

constexpr std::uint32_t defaultStep = 1024;

void copyBytes(char *to, const char *from, unsigned long count) noexcept {
  if (count > 0)
    std::memmove(to, from, count);
}

} // namespace

CResizeBuffer::CResizeBuffer(unsigned long step) noexcept
    : step_(step == 0 ? defaultStep
                      : static_cast<std::uint32_t>(std::min<unsigned long>(step, UINT32_MAX))) {}

bool CResizeBuffer::makeRoom(std::uint64_t need, GrowingBlock &former) noexcept {
  if (need <= capacity_)
    return true;
  if (need > UINT32_MAX || step_ == 0)
    return false;
  const std::uint64_t capacity = (need + step_ - 1) / step_ * step_;
  if (capacity > UINT32_MAX || !data_.grow(size_, capacity, former))
    return false;
  capacity_ = static_cast<std::uint32_t>(capacity);
  return true;
}

int CResizeBuffer::AddData(const char *src, unsigned long len) noexcept {
  GrowingBlock former;
  if (src == nullptr || len > UINT32_MAX || !makeRoom(size_ + std::uint64_t{len}, former))
    return 0;
  copyBytes(data_.bytes() + size_, src, len);
  size_ += static_cast<std::uint32_t>(len);
  return 1;
}

int CResizeBuffer::InsertData(unsigned long pos, const char *src, unsigned long len) noexcept {
  GrowingBlock former;
  if (src == nullptr || pos > size_ || len > UINT32_MAX ||
      !makeRoom(size_ + std::uint64_t{len}, former))
    return 0;
  char *const place = data_.bytes() + pos;
  // The moved bytes may end beyond the size, but not beyond the block.
  copyBytes(place + len, place, std::min(len, capacity_ - pos - len));
  copyBytes(place, src, len);
  size_ += static_cast<std::uint32_t>(len);
  return 1;
}

int CResizeBuffer::SetData(const char *src, unsigned long len) noexcept {
  return replace(src, len, false);
}

int CResizeBuffer::replace(const char *src, unsigned long len, bool isTerminated) noexcept {
  const unsigned long tail = isTerminated ? 1 : 0;
  GrowingBlock former;
  if (src == nullptr || len > UINT32_MAX || !makeRoom(std::uint64_t{len} + tail, former))
    return 0;
  copyBytes(data_.bytes(), src, len);
  if (isTerminated)
    data_.bytes()[len] = 0;
  size_ = static_cast<std::uint32_t>(len + tail);
  return 1;
}

char *CResizeBuffer::GetData(unsigned long *outSize) const noexcept {
  if (outSize != nullptr)
    *outSize = size_;
  return size_ == 0 ? nullptr : data_.bytes();
}

void CResizeBuffer::Release() noexcept {
  data_ = {};
  size_ = capacity_ = step_ = 0;
}

} // namespace searchsystem
