#pragma once

#include "streams/GrowingBlock.h"

#include <cstdint>

/// A growable array of bytes. Its capacity is always a whole multiple of a step that is fixed at
/// construction, and never shrinks.
///
/// Ownership: owns its bytes. What is passed in is copied; what is added or set may be part of this
/// very buffer.
/// Threads: one at a time.
/// Failure: 0, and the buffer is as it was; also when more than 32 bits would be needed for its
/// size.
class CResizeBuffer {
public:
  /// An empty buffer that grows by `step` bytes; 0 stands for 1024.
  explicit CResizeBuffer(unsigned long step) noexcept;
  ~CResizeBuffer() { Release(); }
  CResizeBuffer(const CResizeBuffer &) = delete;
  CResizeBuffer &operator=(const CResizeBuffer &) = delete;

  /// Appends `len` bytes. 1, or 0 when `src` is null or memory is short.
  int AddData(const char *src, unsigned long len) noexcept;

  /// Inserts `len` bytes at `pos`. 1, or 0 when `src` is null, `pos` is beyond the size or memory
  /// is short. The bytes from `pos` on that move out of the way are `len` in number, not all that
  /// follow: a longer tail is overwritten behind them, and a shorter one moves with what lies
  /// behind it in the capacity. Whole only where as many bytes follow `pos` as are inserted.
  int InsertData(unsigned long pos, const char *src, unsigned long len) noexcept;

  /// Replaces the contents. 1, or 0 when `src` is null or memory is short.
  int SetData(const char *src, unsigned long len) noexcept;

  /// The bytes, valid until the next change; null while the size is 0. `outSize` may be null, else
  /// it receives the size.
  char *GetData(unsigned long *outSize) const noexcept;

  [[nodiscard]] unsigned long GetDataSize() const noexcept { return size_; }

  /// Empties the buffer and keeps its capacity.
  void Reset() noexcept { size_ = 0; }

  /// Frees everything. The step is gone as well: a released buffer takes no bytes any more.
  void Release() noexcept;

private:
  friend class CStringBuffer;

  /// `SetData`, with a zero byte after the bytes if so wished.
  int replace(const char *src, unsigned long len, bool isTerminated) noexcept;

  /// Grows the capacity so that `need` bytes fit; `former` as in `GrowingBlock`.
  bool makeRoom(std::uint64_t need, GrowingBlock &former) noexcept;

  GrowingBlock data_;
  std::uint32_t size_ = 0;
  std::uint32_t capacity_ = 0;
  std::uint32_t step_;
};
