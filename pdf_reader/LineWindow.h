#pragma once

#include "pdf_reader/PlainArray.h"
#include "pdf_reader/VectorBytes.h"
#include "streams/CIOStream.h"

#include <algorithm>
#include <cstring>
#include <new>

/// The part of a stream that is looked at, in memory, read forwards and each byte once unless one
/// goes back.
///
/// Line ends stand behind what is in memory, so that loops over a line need not look for its end.
/// Ownership: the stream lives longer. Threads: one at a time. Throws `std::bad_alloc`.
class LineWindow {
public:
  explicit LineWindow(CIOStream &stream) : stream_(stream), size_(stream.GetSize()) {}

  /// Gives what stands at a position within the stream, with at least one byte behind it in memory;
  /// null when the stream fails. What was given before is no longer valid.
  [[nodiscard]] const char *at(long position) {
    if (position < position_ || position > end()) {
      position_ = position;
      length_ = 0;
    }
    if (position == end() && !more(position))
      return nullptr;
    return bytes_.data() + (position - position_);
  }

  /// Reads on, and keeps what is in memory from `position` on. False when the stream fails.
  [[nodiscard]] bool more(long position) {
    const long kept = end() - position;
    if (length_ != 0)
      std::memmove(bytes_.data(), bytes_.data() + (position - position_),
                   static_cast<std::size_t>(kept));
    position_ = position;
    length_ = kept;
    // So little that it stays close to the processor, but more while a long line is read.
    const long wanted = std::max(readAtOnce - end() % readAtOnce, kept / readAtOnce * readAtOnce);
    const long count = std::min(wanted, size_ - end());
    if (count <= 0)
      return false;
    if (!bytes_.reserve(static_cast<std::size_t>(kept + count) + vectorBytes::guardSize))
      throw std::bad_alloc();
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

  /// Where a position is that is not before what is in memory; if it is behind it, its end.
  [[nodiscard]] const char *placeOf(long position) const noexcept {
    return bytes_.data() + (std::min(position, end()) - position_);
  }

  /// Behind the last byte in memory.
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
