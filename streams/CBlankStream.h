#pragma once

#include "streams/CIOStream.h"

#include <cstdint>
#include <memory>

/// Centres an image on a larger canvas of zero bytes while it is written: takes the image's rows,
/// of three bytes a pixel, and passes padded rows on to another stream. It can only be written to.
///
/// Ownership: borrows the target, which must live until the stream is released.
/// Threads: one at a time.
class CBlankStream : public CIOStream {
public:
  CBlankStream() noexcept = default;
  ~CBlankStream() { CBlankStream::Release(); }

  /// Releases the stream and sets its target and, in pixels, the sizes of image and canvas. 1, or 0
  /// when the target is null, the image is larger than the canvas, a number does not fit into 32
  /// bits or memory is short.
  int CreateBlankStream(CIOStream *target, long width, long height, long canvasWidth,
                        long canvasHeight);

  /// Opens the target; 0 without one.
  int Open(unsigned short mode) override;

  /// Passes on a row that was begun, with the rest of it as the row before left it, and closes the
  /// target. 0 without a target, or else what the target answers when it fails.
  int Close() override;

  /// Takes any number of bytes of the image. The rows above it go before the first of them; the
  /// rows below it are written only for an image without rows. Answers 1, 0 where the bytes have no
  /// place to go, or what the target answers when it fails. `done` receives nothing.
  int Write(void *data, long count, long *done) override;

  /// Frees the row; always 1. Nothing can be written then.
  int ReleaseBuffer();

  int Release() override;

private:
  int writeRow();
  int writeBlankRows(std::int32_t count);

  CIOStream *target_ = nullptr;
  std::unique_ptr<unsigned char[]> rowBuffer_;
  std::int32_t rowBytes_ = 0;
  std::int32_t topWritten_ = 0;
  std::int32_t topRows_ = 0;
  std::int32_t bottomWritten_ = 0;
  std::int32_t bottomRows_ = 0;
  std::int32_t innerRowBytes_ = 0;
  std::int32_t position_ = 0; ///< bytes of the current row received so far
  std::int32_t height_ = 0;
  std::int32_t rowsCounter_ = 0; ///< stays at 0
  std::int32_t leftPadding_ = 0; ///< in bytes
};

/// Copies all that `src` holds into `dst`, at most `blockSize` bytes at a time. Opens both before
/// and closes both afterwards. Answers 1 when every read and write did, 0 for a missing stream, a
/// block size of 0 or less, or too little memory, and else what the failing stream answered.
///
/// It does not look at what the closing answers. 1 says that `dst` has taken all bytes, not that
/// they are where it brings them: a `CFileStream` may still lose the last ones to a full disk. Who
/// must not lose them compares the file's size afterwards.
int CopyStream(CIOStream *dst, CIOStream *src, long blockSize);
