#pragma once

#include "streams/CIOStream.h"
#include "streams/FileFunctions.h"

#include <string>

namespace searchsystem {

/// A stream over a file: `CreateFileStream` sets the path, `Open` and `Close` open and close the
/// file, `Release` clears the path.
///
/// Ownership: owns the open file and a copy of its path.
/// Threads: one at a time.
class CFileStream : public CIOStream {
public:
  CFileStream() noexcept = default;

  /// Releases the stream and copies a path; does not touch the file. 1, or 0 if the path is null or
  /// empty or memory is short.
  int CreateFileStream(const char *path, unsigned short progressMode,
                       StreamProgressCallback callback);

  /// Closes the file if it is open, then opens it as `openFile` does. 0 without a path, for a mode
  /// with neither bit, or if the file cannot be opened.
  int Open(unsigned short mode) override;

  /// 0 if nothing is open, else 1, even if buffered bytes cannot be written, as on a full disk. To
  /// detect that, call `GetSize` first: it flushes, and returns 0 on failure.
  int Close() override;

  /// 1 only if all `count` bytes were read: 0 at the end of the file, with their number in `done`.
  int Read(void *buffer, long count, long *done) override;

  /// 1 only if all `count` bytes were written. They may stay in a buffer until the next `Seek`,
  /// `GetSize` or `Close`.
  int Write(void *buffer, long count, long *done) override;

  /// Without write mode the offset counts from the beginning, whatever the origin. With it, a
  /// position beyond `GetSize` extends the file with zero bytes; 0, and nothing changed, if the
  /// disk has no room for them or the size is unknown.
  int Seek(long offset, unsigned short origin) override;

  long Tell() override;

  /// The size of the open file, buffered bytes included; 0 while closed and on failure.
  long GetSize() override;

  int Release() override;

protected:
  /// As `Open`, but throws `std::bad_alloc` if memory is short.
  bool reopen(unsigned short mode);

private:
  int seekTo(long position);

  CFilePointer file_;
  std::string path_; ///< empty while there is none
  /// The last size from the system, enough for a seek that ignores the size: a system call before
  /// each read of a few bytes would cost far more than the read.
  long knownSize_ = 0;
  bool isOldSizeEnough_ = false;
  bool isSizeUnknown_ = false;
};

} // namespace searchsystem
