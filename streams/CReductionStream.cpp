#include "streams/CReductionStream.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace searchsystem {

namespace {

/// The sums of a column fit in 32 bits, those of all pixels in 64.
constexpr long greatestSize = 1 << 24;

/// Where the centre of a new pixel lies among the centres of the old ones.
struct Place {
  std::uint64_t index;  ///< of the old pixel at or before it
  std::uint64_t behind; ///< its distance from that one in parts of 2 * newSize
};

/// Since the new size is not larger, no centre lies before the first old one or behind the last.
constexpr Place placeOf(std::uint64_t newIndex, std::uint64_t size, std::uint64_t newSize) {
  const std::uint64_t position = (2 * newIndex + 1) * size - newSize;
  return {position / (2 * newSize), position % (2 * newSize)};
}

} // namespace

int CReductionStream::CreateReductionStream(CIOStream *target, long width, long height,
                                            long pixelBytes, long newWidth, long newHeight,
                                            ReductionMethod method) {
  Release();
  if (target == nullptr || (pixelBytes != 1 && pixelBytes != 3) || newWidth <= 0 ||
      newHeight <= 0 || newWidth > width || newHeight > height || width > greatestSize ||
      height > greatestSize || method > reductionAverage)
    return 0;
  const auto rowBytes = static_cast<std::size_t>(width * pixelBytes);
  if (method == reductionBilinear) {
    previousRow_.reset(new (std::nothrow) unsigned char[rowBytes]);
    if (previousRow_ == nullptr)
      return 0;
  } else if (method == reductionAverage) {
    sums_.reset(new (std::nothrow) std::uint32_t[rowBytes]());
    if (sums_ == nullptr)
      return 0;
  }
  if (!startRows(target, width * pixelBytes, newWidth * pixelBytes))
    return 0;
  width_ = static_cast<std::uint64_t>(width);
  height_ = static_cast<std::uint64_t>(height);
  pixelBytes_ = static_cast<std::uint64_t>(pixelBytes);
  newWidth_ = static_cast<std::uint64_t>(newWidth);
  newHeight_ = static_cast<std::uint64_t>(newHeight);
  method_ = method;
  return 1;
}

int CReductionStream::takeRow(const unsigned char *row) {
  int result = 1;
  switch (method_) {
  case reductionNearest:
    result = takeNearest(row);
    break;
  case reductionBilinear:
    result = takeBilinear(row);
    break;
  case reductionAverage:
    result = takeAverage(row);
    break;
  }
  ++rows_;
  return result;
}

int CReductionStream::takeNearest(const unsigned char *row) {
  if (newRows_ == newHeight_ || newRows_ * height_ / newHeight_ != rows_)
    return 1;
  for (std::uint64_t x = 0; x < newWidth_; ++x)
    std::memcpy(newRow() + x * pixelBytes_, row + x * width_ / newWidth_ * pixelBytes_,
                pixelBytes_);
  ++newRows_;
  return writeRow();
}

int CReductionStream::takeBilinear(const unsigned char *row) {
  int result = 1;
  if (newRows_ < newHeight_) {
    const Place y = placeOf(newRows_, height_, newHeight_);
    if (y.index + (y.behind > 0 ? 1 : 0) == rows_) {
      const unsigned char *const upper = y.behind > 0 ? previousRow_.get() : row;
      const std::uint64_t whole = 4 * newWidth_ * newHeight_;
      for (std::uint64_t pixel = 0; pixel < newWidth_; ++pixel) {
        const Place x = placeOf(pixel, width_, newWidth_);
        const std::uint64_t left = x.index * pixelBytes_;
        const std::uint64_t right = x.behind > 0 ? left + pixelBytes_ : left;
        for (std::uint64_t i = 0; i < pixelBytes_; ++i) {
          const auto across = [&](const unsigned char *from) {
            return (2 * newWidth_ - x.behind) * from[left + i] + x.behind * from[right + i];
          };
          const std::uint64_t sum =
              (2 * newHeight_ - y.behind) * across(upper) + y.behind * across(row);
          newRow()[pixel * pixelBytes_ + i] = static_cast<unsigned char>((sum + whole / 2) / whole);
        }
      }
      ++newRows_;
      result = writeRow();
    }
  }
  std::memcpy(previousRow_.get(), row, width_ * pixelBytes_);
  return result;
}

// An old row is newHeight parts high, a new row height parts: an old row has parts in two new rows
// at most.
int CReductionStream::takeAverage(const unsigned char *row) {
  const std::uint64_t end = (rows_ + 1) * newHeight_;
  const std::uint64_t newEnd = (newRows_ + 1) * height_;
  const std::uint64_t behind = end > newEnd ? end - newEnd : 0;
  addToSums(row, static_cast<std::uint32_t>(newHeight_ - behind));
  if (end < newEnd)
    return 1;
  averageSums();
  std::fill_n(sums_.get(), width_ * pixelBytes_, 0);
  if (behind > 0)
    addToSums(row, static_cast<std::uint32_t>(behind));
  ++newRows_;
  return writeRow();
}

void CReductionStream::addToSums(const unsigned char *row, std::uint32_t weight) noexcept {
  std::uint32_t *const sums = sums_.get();
  const std::uint64_t count = width_ * pixelBytes_;
  for (std::uint64_t i = 0; i < count; ++i)
    sums[i] += weight * row[i];
}

// Along a row it is the same: an old pixel is newWidth parts wide, a new one width parts.
void CReductionStream::averageSums() noexcept {
  const std::uint64_t area = width_ * height_;
  for (std::uint64_t pixel = 0; pixel < newWidth_; ++pixel) {
    const std::uint64_t begin = pixel * width_, end = begin + width_;
    std::uint64_t totals[3] = {};
    std::uint64_t at = begin;
    do {
      const std::uint64_t old = at / newWidth_;
      const std::uint64_t next = std::min(end, (old + 1) * newWidth_);
      for (std::uint64_t i = 0; i < pixelBytes_; ++i)
        totals[i] += (next - at) * sums_[old * pixelBytes_ + i];
      at = next;
    } while (at < end);
    for (std::uint64_t i = 0; i < pixelBytes_; ++i)
      newRow()[pixel * pixelBytes_ + i] = static_cast<unsigned char>((totals[i] + area / 2) / area);
  }
}

void CReductionStream::restart() noexcept {
  rows_ = newRows_ = 0;
  if (sums_ != nullptr)
    std::fill_n(sums_.get(), width_ * pixelBytes_, 0);
}

int CReductionStream::Release() {
  previousRow_.reset();
  sums_.reset();
  width_ = height_ = 0;
  return RowFilter::Release();
}

} // namespace searchsystem
