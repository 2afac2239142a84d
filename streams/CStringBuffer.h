#pragma once

#include "streams/CResizeBuffer.h"

/// A text ended by a NUL, in a buffer that grows by 64 bytes. No text at all (as after
/// construction) differs from the empty text.
///
/// Ownership: owns its bytes. What is passed in is copied, and may be part of this very text.
/// Threads: one at a time.
/// Failure: the text is as it was.
class CStringBuffer {
public:
  CStringBuffer() noexcept = default;
  ~CStringBuffer() { Release(); }
  CStringBuffer(const CStringBuffer &) = delete;
  CStringBuffer &operator=(const CStringBuffer &) = delete;

  /// Takes `len` bytes of `str`, or all up to its NUL when `len` is negative. 1, or 0 when `str` is
  /// null or memory is short.
  int SetString(const char *str, int len) noexcept;

  /// Takes the whole of `str`; null changes nothing.
  CStringBuffer &operator=(const char *str) noexcept;

  /// Takes `str` when there is no text. Otherwise one more NUL goes before the end and nothing of
  /// `str` is taken: the text reads as before, and is one byte longer. Null changes nothing.
  CStringBuffer &operator+=(const char *str) noexcept;

  /// The text, valid until the next change; null when there is none.
  operator char *() const noexcept { return buffer_.GetData(nullptr); }

  /// The length in bytes without the NUL at the end; 0 when there is no text.
  [[nodiscard]] unsigned long GetLength() const noexcept;

  /// Makes it the empty text. 1, or 0 when memory is short.
  int Reset() noexcept;

  /// Frees everything; takes no text any more. Always 1.
  int Release() noexcept;

private:
  CResizeBuffer buffer_{64};
};
