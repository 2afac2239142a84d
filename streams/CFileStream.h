#pragma once

#include "streams/CIOStream.h"
#include "streams/FileFunctions.h"

#include <memory>

/// A stream over a file. `CreateFileStream` names the file, `Open` opens it, `Close` lets it be
/// opened again, `Release` forgets it.
///
/// Ownership: owns the open file and a copy of its path.
/// Threads: one at a time.
class CFileStream : public CIOStream {
public:
  CFileStream() noexcept = default;
  ~CFileStream() { CFileStream::Release(); }

  /// Releases the stream and takes a path. 1, or 0 when the path is null or empty or memory is
  /// short. Does not look at the file.
  int CreateFileStream(const char *path, unsigned short progressMode,
                       StreamProgressCallback callback);

  /// Closes what is open and opens the file, in a way that `openFile` tells. 0 without a path, for
  /// a mode without one of the two bits, or when the file cannot be opened.
  int Open(unsigned short mode) override;

  /// 0 when nothing is open, else 1: also when what has been written cannot all be brought to the
  /// file, as on a full disk. Who has to know asks `GetSize` before, which brings it there and
  /// answers 0 when that fails.
  int Close() override;

  /// 1 only when all `count` bytes came: at the end of the file 0, with `done` telling how many
  /// did.
  int Read(void *buffer, long count, long *done) override;

  /// 1 only when all `count` bytes were written. The last of them may wait in memory until the
  /// stream is sought, closed or asked for its size.
  int Write(void *buffer, long count, long *done) override;

  /// Without the write mode the offset counts from the beginning whatever the origin. With it, as
  /// many zero bytes as the position lies beyond `GetSize` are put behind the end of the file; 0,
  /// with nothing changed, when the disk has no room for them, or the size cannot be had.
  int Seek(long offset, unsigned short origin) override;

  long Tell() override;

  /// The size of the open file with all that has been written; 0 while closed, and on failure.
  long GetSize() override;

  int Release() override;

private:
  int seekTo(long offset, int whence);
  int seekToRead(long offset);
  int append(long count);

  CFilePointer file_;
  std::unique_ptr<char[]> path_;
  /// What the system said last, and whether a seek asks that will not use the answer: to ask the
  /// system before each read of a few bytes would cost far more than the read.
  long knownSize_ = 0;
  bool isOldSizeEnough_ = false;
  /// Whether the size could not be had.
  bool isSizeUnknown_ = false;
};
