#pragma once

#include "streams/CIOStream.h"
#include "streams/GrowingBlock.h"

#include <cstdint>
#include <optional>

/// A stream over bytes in memory: over a buffer of its own, which grows in fixed steps, or over a
/// caller's, which is read and written in place. Sizes and positions have 32 bits with a sign; what
/// does not fit fails.
///
/// Ownership: owns its own buffer; an attached one must live until it is released.
/// Threads: one at a time.
class CMemStream : public CIOStream {
public:
  CMemStream() noexcept = default;
  ~CMemStream() { CMemStream::Release(); }

  /// Releases the stream and works on the caller's buffer, all of it data. 1, or 0 when the buffer
  /// is null or the size no positive number of 32 bits.
  int Attach(unsigned char *buffer, long size);

  /// Releases the stream and makes it one with a buffer of its own. The capacity is a multiple of
  /// `growthUnit`, except that of `initialSize`, which is one of 1024. 1, or 0 when the unit is 0,
  /// a number does not fit or memory is short.
  int CreateMemStream(long initialSize, long growthUnit, unsigned short progressMode,
                      StreamProgressCallback callback);

  /// The bytes, valid until the buffer grows or goes; null when there are none.
  [[nodiscard]] unsigned char *GetMemory() const noexcept { return buffer_; }

  /// Lets go of the buffer, and frees it if it is the stream's own. Always 1.
  int ReleaseBuffer();

  /// Makes the capacity the multiple of the growth unit that holds `size` bytes. A smaller one only
  /// cuts off the data behind it. Growing turns an attached buffer into a copy of the stream's own.
  /// 0 when the capacity does not fit or memory is short; then nothing has changed.
  int ReMakeBuffer(long size);

  /// Always 1. Write mode alone empties the stream and clears its whole capacity.
  int Open(unsigned short mode) override;

  /// Always 1; the data stays.
  int Close() override;

  /// 1 when at least one byte came. 0 before the beginning of the data.
  int Read(void *buffer, long count, long *done) override;

  /// An own buffer grows as needed. An attached one takes what fits, and the answer is 0 when that
  /// is not all. 0 before the beginning of the data.
  int Write(void *buffer, long count, long *done) override;

  /// Writable is an own buffer in write mode. There the data grows to the new position, and an
  /// offset of 0 or less from the end counts twice. Elsewhere an offset from the end counts from
  /// the current position, and a position beyond the data fails. Positions before the beginning are
  /// taken.
  int Seek(long offset, unsigned short origin) override;

  long Tell() override { return position_; }
  long GetSize() override { return dataSize_; }
  int Release() override;

private:
  [[nodiscard]] std::optional<std::int32_t> wholeUnits(std::int64_t size) const noexcept;
  bool enlarge(std::int32_t capacity, GrowingBlock &former) noexcept;
  bool growTo(std::int64_t need, GrowingBlock &former) noexcept;
  int seekToWrite(std::int64_t offset, unsigned short origin) noexcept;

  static constexpr std::int32_t defaultGrowthUnit = 1024;

  std::int32_t attached_ = 0;
  unsigned char *buffer_ = nullptr; ///< the caller's or that of `own_`
  std::int32_t capacity_ = 0;
  std::int32_t dataSize_ = 0;
  std::int32_t growthUnit_ = defaultGrowthUnit;
  std::int32_t open_ = 0;
  std::int32_t position_ = 0;
  GrowingBlock own_;
};
