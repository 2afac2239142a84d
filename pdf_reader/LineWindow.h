#pragma once

#include "pdf_reader/PlainArray.h"
#include "pdf_reader/VectorBytes.h"
#include "streams/CIOStream.h"

#include <algorithm>
#include <cstring>

namespace searchsystem {

/// A part of a stream in memory. If it only moves forward, it reads each byte once.
///
/// Line ends follow its last byte, so that loops over a line always stop.
/// Ownership: the stream lives longer. Threads: one at a time. Throws `std::bad_alloc`.
class LineWindow {
public:
  explicit LineWindow(CIOStream &stream) : stream_(stream), size_(stream.GetSize()) {}

  /// The byte at a position within the stream; null if the stream fails. Invalidates earlier
  /// pointers.
  [[nodiscard]] const char *at(long position) {
    if (position < position_ || position > end()) {
      position_ = position;
      length_ = 0;
    }
    if (position == end() && !more(position))
      return nullptr;
    return bytes_.data() + (position - position_);
  }

  /// Reads more behind the window, which then begins at `position`. False when the stream fails.
  [[nodiscard]] bool more(long position) {
    const long kept = end() - position;
    if (length_ != 0)
      std::memmove(bytes_.data(), bytes_.data() + (position - position_),
                   static_cast<std::size_t>(kept));
    position_ = position;
    length_ = kept;
    // Small enough for the fastest cache; larger for a long line.
    const long wanted = std::max(readAtOnce - end() % readAtOnce, kept / readAtOnce * readAtOnce);
    const long count = std::min(wanted, size_ - end());
    if (count <= 0)
      return false;
    bytes_.reserve(static_cast<std::size_t>(kept + count) + vectorBytes::guardSize);
    if (stream_.Seek(end(), streamSeekBegin) != 1 ||
        stream_.Read(bytes_.data() + length_, count, nullptr) != 1)
      return false;
    length_ += count;
    std::memset(bytes_.data() + length_, '\n', vectorBytes::guardSize);
    return true;
  }

  [[nodiscard]] long positionOf(const char *byte) const noexcept {
    return position_ + (byte - bytes_.data());
  }

  /// The byte at a position, which is not before the window, or the window's end.
  [[nodiscard]] const char *placeOf(long position) const noexcept {
    return bytes_.data() + (std::min(position, end()) - position_);
  }

  /// The end of the bytes in memory.
  [[nodiscard]] const char *dataEnd() const noexcept { return bytes_.data() + length_; }
  [[nodiscard]] long end() const noexcept { return position_ + length_; }

  /// The size of the stream.
  [[nodiscard]] long size() const noexcept { return size_; }

private:
  static constexpr long readAtOnce = 1 << 13;

  CIOStream &stream_;
  long size_;
  long position_ = 0;
  long length_ = 0;
  PlainArray<char> bytes_;
};

} // namespace searchsystem
