#pragma once

#include "streams/CIOStream.h"
#include "streams/GrowingBlock.h"

#include <cstdint>
#include <optional>

namespace searchsystem {

/// A stream over a buffer in memory: its own, which grows in fixed steps, or a caller's, read and
/// written in place. Sizes and positions are signed 32-bit numbers; larger ones fail.
///
/// Ownership: owns its own buffer; an attached one must live until the stream is released.
/// Threads: one at a time.
class CMemStream : public CIOStream {
public:
  CMemStream() noexcept = default;

  /// Releases the stream and attaches the caller's buffer, all of it data. 1, or 0 if the buffer is
  /// null or the size not a positive 32-bit number.
  int Attach(unsigned char *buffer, long size);

  /// Releases the stream and gives it a buffer of its own. The capacity is a multiple of
  /// `growthUnit`; the initial one, for `initialSize` bytes, is a multiple of 1024. 1, or 0 if the
  /// unit is 0, a number exceeds 32 bits, or memory is short.
  int CreateMemStream(long initialSize, long growthUnit, unsigned short progressMode,
                      StreamProgressCallback callback);

  /// The bytes, valid until the buffer grows or is released; null if there are none.
  [[nodiscard]] unsigned char *GetMemory() const noexcept { return buffer_; }

  /// Drops the buffer and frees it if it is the stream's own. Always 1.
  int ReleaseBuffer();

  /// Sets the capacity to the multiple of the growth unit that holds `size` bytes. A smaller one
  /// only truncates the data. Growing replaces an attached buffer with a copy of the stream's own.
  /// 0, and nothing changed, if the capacity exceeds 32 bits or memory is short.
  int ReMakeBuffer(long size);

  /// Always 1. Write mode alone empties the stream and clears its whole capacity.
  int Open(unsigned short mode) override;

  /// Always 1; the data stays.
  int Close() override;

  /// 1 if at least one byte was read. 0 at a position below 0.
  int Read(void *buffer, long count, long *done) override;

  /// The stream's own buffer grows as needed. An attached one takes what fits; 0 if not all did.
  /// 0 at a position below 0.
  int Write(void *buffer, long count, long *done) override;

  /// In write mode with a buffer of its own, the data grows to the new position, and an offset of 0
  /// or less from the end counts twice. Otherwise an offset from the end counts from the current
  /// position, and a position beyond the data fails. Positions below 0 are accepted.
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

  bool isAttached_ = false;
  unsigned char *buffer_ = nullptr; ///< the caller's or that of `own_`
  std::int32_t capacity_ = 0;
  std::int32_t dataSize_ = 0;
  std::int32_t growthUnit_ = defaultGrowthUnit;
  bool isOpen_ = false;
  std::int32_t position_ = 0;
  GrowingBlock own_;
};

} // namespace searchsystem
