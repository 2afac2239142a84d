#pragma once

#include "streams/GrowingBlock.h"

#include <cstdint>

namespace searchsystem {

/// A growable array of bytes. Its capacity is a multiple of a step fixed at construction, and never
/// shrinks.
///
/// Ownership: owns its bytes. Copies its arguments, which may be part of the buffer itself.
/// Threads: one at a time.
/// Failure: 0, and the buffer is unchanged; also if the size would exceed 32 bits.
class CResizeBuffer {
public:
  /// An empty buffer that grows by `step` bytes; 0 means 1024.
  explicit CResizeBuffer(unsigned long step) noexcept;
  CResizeBuffer(const CResizeBuffer &) = delete;
  CResizeBuffer &operator=(const CResizeBuffer &) = delete;

  /// Appends `len` bytes. 1, or 0 if `src` is null or memory is short.
  int AddData(const char *src, unsigned long len) noexcept;

  /// Inserts `len` bytes at `pos`. 1, or 0 if `src` is null, `pos` is beyond the size, or memory is
  /// short. Only `len` bytes from `pos` on are moved, not the whole tail: a longer tail is partly
  /// overwritten, and a shorter one moves with the unused bytes behind it. Correct only if exactly
  /// `len` bytes follow `pos`.
  int InsertData(unsigned long pos, const char *src, unsigned long len) noexcept;

  /// Replaces the contents. 1, or 0 if `src` is null or memory is short.
  int SetData(const char *src, unsigned long len) noexcept;

  /// The bytes, valid until the next change; null while the size is 0. `outSize`, unless null,
  /// receives the size.
  char *GetData(unsigned long *outSize) const noexcept;

  [[nodiscard]] unsigned long GetDataSize() const noexcept { return size_; }

  /// Empties the buffer and keeps its capacity.
  void Reset() noexcept { size_ = 0; }

  /// Frees everything and clears the step: a released buffer accepts no more bytes.
  void Release() noexcept;

private:
  friend class CStringBuffer;

  /// `SetData`, with a zero byte after the bytes if `isTerminated`.
  int replace(const char *src, unsigned long len, bool isTerminated) noexcept;

  /// Grows the capacity so that `need` bytes fit; `former` as in `GrowingBlock`.
  bool makeRoom(std::uint64_t need, GrowingBlock &former) noexcept;

  GrowingBlock data_;
  std::uint32_t size_ = 0;
  std::uint32_t capacity_ = 0;
  std::uint32_t step_;
};

} // namespace searchsystem
