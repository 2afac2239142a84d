#pragma once

#include "streams/CIOStream.h"

#include <cstdint>
#include <memory>

namespace searchsystem {

/// Centres an image on a larger canvas of zero bytes: takes the image's rows, three bytes per
/// pixel, pads them, and writes them to a target stream. Write-only.
///
/// Ownership: borrows the target, which must outlive the stream or its release.
/// Threads: one at a time.
class CBlankStream : public CIOStream {
public:
  CBlankStream() noexcept = default;

  /// Releases the stream and sets its target and the sizes of image and canvas in pixels. 1, or 0
  /// if the target is null, the image is larger than the canvas, a number exceeds 32 bits, or
  /// memory is short.
  int CreateBlankStream(CIOStream *target, long width, long height, long canvasWidth,
                        long canvasHeight);

  /// Opens the target; 0 without one.
  int Open(unsigned short mode) override;

  /// Writes out a partial row; the rest is the previous row's. Closes the target. 0 without a
  /// target, else the target's result.
  int Close() override;

  /// Takes any number of bytes of the image. The rows above the image precede the first byte; the
  /// rows below it are written only for an image without rows. 1, 0 if there is no room for the
  /// bytes, or the failing target's result. `done` is ignored.
  int Write(void *data, long count, long *done) override;

  /// Frees the row buffer, after which writes fail; always 1.
  int ReleaseBuffer();

  int Release() override;

private:
  int restarted(int result) noexcept;
  int writeRow();
  int writeBlankRows(std::int64_t count);

  CIOStream *target_ = nullptr;
  std::unique_ptr<unsigned char[]> rowBuffer_;
  std::int64_t rowBytes_ = 0;
  bool isTopWritten_ = false;
  std::int64_t topRows_ = 0;
  bool isBottomWritten_ = false;
  std::int64_t bottomRows_ = 0;
  std::int64_t innerRowBytes_ = 0;
  std::int64_t position_ = 0; ///< bytes of the current row received so far
  std::int64_t height_ = 0;
  std::int64_t leftPadding_ = 0; ///< in bytes
};

/// Copies all of `src` to `dst`, at most `blockSize` bytes at a time. Opens and closes both. 1 if
/// every read and write succeeded, 0 for a missing stream, a block size of 0 or less, or too little
/// memory, else the failing stream's result.
///
/// The results of closing are ignored. 1 means that `dst` accepted all bytes: a `CFileStream` may
/// still lose the last ones to a full disk. To detect that, compare the file's size afterwards.
int CopyStream(CIOStream *dst, CIOStream *src, long blockSize);

} // namespace searchsystem
