#include "streams/CBlankStream.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::int64_t bytesPerPixel = 3;

template <typename... Numbers> constexpr bool allFit(Numbers... numbers) noexcept {
  return (std::in_range<std::int32_t>(numbers) && ...);
}

/// Zero-filled bytes; null when memory is short or the size is below zero.
std::unique_ptr<unsigned char[]> makeBytes(std::int64_t size) noexcept {
  if (size < 0)
    return nullptr;
  return std::unique_ptr<unsigned char[]>(
      new (std::nothrow) unsigned char[static_cast<std::size_t>(size)]());
}

} // namespace

int CBlankStream::CreateBlankStream(CIOStream *target, long width, long height, long canvasWidth,
                                    long canvasHeight) {
  Release();
  if (target == nullptr || width > canvasWidth || height > canvasHeight ||
      !allFit(width, height, canvasWidth, canvasHeight))
    return 0;
  const std::int64_t rowBytes = canvasWidth * bytesPerPixel;
  const std::int64_t innerRowBytes = width * bytesPerPixel;
  const std::int64_t blankRows = std::int64_t{canvasHeight} - height;
  if (!allFit(rowBytes, innerRowBytes, blankRows))
    return 0;
  rowBuffer_ = makeBytes(rowBytes);
  if (rowBuffer_ == nullptr)
    return 0;
  target_ = target;
  rowBytes_ = rowBytes;
  topRows_ = blankRows / 2;
  bottomRows_ = blankRows - topRows_;
  innerRowBytes_ = innerRowBytes;
  height_ = height;
  leftPadding_ = (std::int64_t{canvasWidth} - width) / 2 * bytesPerPixel;
  return 1;
}

/// Prepares for the next image if the target was opened or closed.
int CBlankStream::restarted(int result) noexcept {
  if (result == 1) {
    isTopWritten_ = isBottomWritten_ = false;
    position_ = 0;
  }
  return result;
}

int CBlankStream::Open(unsigned short mode) {
  return target_ != nullptr ? restarted(target_->Open(mode)) : 0;
}

int CBlankStream::Close() {
  if (target_ == nullptr)
    return 0;
  if (position_ != 0)
    if (const int result = writeRow(); result != 1)
      return result;
  return restarted(target_->Close());
}

int CBlankStream::writeRow() {
  long done = 0;
  return target_->Write(rowBuffer_.get(), static_cast<long>(rowBytes_), &done);
}

int CBlankStream::writeBlankRows(std::int64_t count) {
  std::memset(rowBuffer_.get(), 0, static_cast<std::size_t>(rowBytes_));
  int result = 1;
  for (std::int64_t row = 0; row < count && result == 1; ++row)
    result = writeRow();
  return result;
}

int CBlankStream::Write(void *data, long count, long * /*done*/) {
  if (target_ == nullptr || data == nullptr || rowBuffer_ == nullptr)
    return 0;
  if (!isTopWritten_) {
    if (topRows_ != 0)
      if (const int result = writeBlankRows(topRows_); result != 1)
        return result;
    isTopWritten_ = true;
  }
  // An image without a width has no room for bytes.
  if (count > 0 && innerRowBytes_ <= 0)
    return 0;
  const auto *bytes = static_cast<const unsigned char *>(data);
  while (count > 0) {
    const long part = std::min(count, static_cast<long>(innerRowBytes_ - position_));
    std::memcpy(rowBuffer_.get() + leftPadding_ + position_, bytes, static_cast<std::size_t>(part));
    bytes += part;
    count -= part;
    position_ += part;
    if (position_ == innerRowBytes_) {
      if (const int result = writeRow(); result != 1)
        return result;
      position_ = 0;
    }
  }
  if (height_ > 0 || isBottomWritten_)
    return 1;
  const int result = writeBlankRows(bottomRows_);
  isBottomWritten_ = result == 1;
  return result;
}

int CBlankStream::ReleaseBuffer() {
  rowBuffer_.reset();
  rowBytes_ = 0;
  return 1;
}

int CBlankStream::Release() {
  ReleaseBuffer();
  CIOStream::Release();
  target_ = nullptr;
  topRows_ = bottomRows_ = innerRowBytes_ = height_ = leftPadding_ = 0;
  return restarted(1);
}

int CopyStream(CIOStream *dst, CIOStream *src, long blockSize) {
  if (dst == nullptr || src == nullptr || blockSize == 0)
    return 0;
  int result = src->Open(streamReadMode);
  if (result != 1)
    return result;
  if (result = dst->Open(streamWriteMode); result != 1) {
    src->Close();
    return result;
  }
  long total = src->GetSize();
  const long chunk = std::min(total, blockSize);
  const std::unique_ptr<unsigned char[]> block = makeBytes(chunk);
  if (block == nullptr)
    result = 0;
  while (total != 0 && result == 1) {
    const long part = std::min(chunk, total);
    long done = 0;
    result = src->Read(block.get(), part, &done);
    if (result == 1)
      result = dst->Write(block.get(), part, &done);
    total -= part;
  }
  dst->Close();
  src->Close();
  return result;
}

} // namespace searchsystem
