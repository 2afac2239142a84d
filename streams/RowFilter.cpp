#include "streams/RowFilter.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace searchsystem {

namespace {

std::unique_ptr<unsigned char[]> makeRow(long bytes) noexcept {
  return std::unique_ptr<unsigned char[]>(
      new (std::nothrow) unsigned char[static_cast<std::size_t>(bytes)]);
}

} // namespace

bool RowFilter::startRows(CIOStream *target, long rowBytes, long newRowBytes) noexcept {
  row_ = makeRow(rowBytes);
  newRow_ = makeRow(newRowBytes);
  if (row_ == nullptr || newRow_ == nullptr)
    return false;
  target_ = target;
  rowBytes_ = rowBytes;
  newRowBytes_ = newRowBytes;
  position_ = 0;
  return true;
}

int RowFilter::writeRow() {
  long done = 0;
  return target_->Write(newRow_.get(), newRowBytes_, &done);
}

/// Prepares for the next image if the target was opened or closed.
int RowFilter::restarted(int result) noexcept {
  if (result == 1) {
    position_ = 0;
    restart();
  }
  return result;
}

int RowFilter::Open(unsigned short mode) {
  return target_ != nullptr ? restarted(target_->Open(mode)) : 0;
}

int RowFilter::Close() { return target_ != nullptr ? restarted(target_->Close()) : 0; }

int RowFilter::Write(void *data, long count, long * /*done*/) {
  if (target_ == nullptr || data == nullptr)
    return 0;
  const auto *bytes = static_cast<const unsigned char *>(data);
  while (count > 0) {
    if (!hasRoom())
      return 0;
    const long part = std::min(count, rowBytes_ - position_);
    const unsigned char *row = bytes;
    if (part < rowBytes_) {
      std::memcpy(row_.get() + position_, bytes, static_cast<std::size_t>(part));
      row = row_.get();
    }
    bytes += part;
    count -= part;
    position_ = (position_ + part) % rowBytes_;
    if (position_ == 0)
      if (const int result = takeRow(row); result != 1)
        return result;
  }
  return 1;
}

int RowFilter::Release() {
  CIOStream::Release();
  target_ = nullptr;
  row_.reset();
  newRow_.reset();
  rowBytes_ = newRowBytes_ = 0;
  return restarted(1);
}

} // namespace searchsystem
