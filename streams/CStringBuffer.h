#pragma once

#include "streams/CResizeBuffer.h"

namespace searchsystem {

/// A NUL-terminated text in a buffer that grows by 64 bytes. Having no text, as after construction,
/// differs from the empty text.
///
/// Ownership: owns its bytes. Copies its arguments, which may be part of the text itself.
/// Threads: one at a time.
/// Failure: the text is unchanged.
class CStringBuffer {
public:
  CStringBuffer() noexcept = default;
  CStringBuffer(const CStringBuffer &) = delete;
  CStringBuffer &operator=(const CStringBuffer &) = delete;

  /// Copies `len` bytes of `str`, or all up to its NUL if `len` is negative. 1, or 0 if `str` is
  /// null or memory is short.
  int SetString(const char *str, int len) noexcept;

  /// Copies all of `str`; null changes nothing.
  CStringBuffer &operator=(const char *str) noexcept;

  /// Copies `str` if there is no text. Otherwise appends one more NUL and nothing of `str`: the
  /// text reads as before and is one byte longer. Null changes nothing.
  CStringBuffer &operator+=(const char *str) noexcept;

  /// The text, valid until the next change; null if there is none.
  operator char *() const noexcept { return buffer_.GetData(nullptr); }

  /// The length in bytes without the final NUL; 0 if there is no text.
  [[nodiscard]] unsigned long GetLength() const noexcept;

  /// Sets the empty text. 1, or 0 if memory is short.
  int Reset() noexcept;

  /// Frees everything and accepts no more text. Always 1.
  int Release() noexcept;

private:
  CResizeBuffer buffer_{64};
};

} // namespace searchsystem
