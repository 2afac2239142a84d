#pragma once

#include "streams/CIOStream.h"

#include <memory>

namespace searchsystem {

/// A write-only filter over an image's rows: gathers the bytes that are written to it into rows,
/// which a derived class changes and hands on to a target stream. Rows have no padding.
///
/// Ownership: borrows the target, which must outlive the stream or its release.
/// Threads: one at a time.
class RowFilter : public CIOStream {
public:
  /// Opens the target for the next image; 0 without one, else the target's result.
  int Open(unsigned short mode) override;

  /// Closes the target; the image ends with its last whole row. 0 without a target, else the
  /// target's result.
  int Close() override;

  /// Takes any number of bytes of the image. 1, 0 if the image has no room for all of them (those
  /// that it has room for are taken) or without a target, or the failing target's result. `done` is
  /// ignored.
  int Write(void *data, long count, long *done) override;

  int Release() override;

protected:
  /// Sets the target and the bytes of an incoming and of an outgoing row, each above 0. False if
  /// memory is short.
  [[nodiscard]] bool startRows(CIOStream *target, long rowBytes, long newRowBytes) noexcept;

  /// Writes the outgoing row to the target; its result.
  int writeRow();

  /// The outgoing row.
  [[nodiscard]] unsigned char *newRow() const noexcept { return newRow_.get(); }

private:
  /// Whether the image has room for another row.
  [[nodiscard]] virtual bool hasRoom() const noexcept = 0;

  /// Takes the next row of the image, which stays valid for the call only. 1, or the result of the
  /// write that failed.
  virtual int takeRow(const unsigned char *row) = 0;

  /// Prepares for the first row of an image.
  virtual void restart() noexcept = 0;

  int restarted(int result) noexcept;

  CIOStream *target_ = nullptr;
  std::unique_ptr<unsigned char[]> row_; ///< incoming, received in part
  std::unique_ptr<unsigned char[]> newRow_;
  long rowBytes_ = 0;
  long newRowBytes_ = 0;
  long position_ = 0; ///< bytes of `row_` received so far, less than `rowBytes_`
};

} // namespace searchsystem
