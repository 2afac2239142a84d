#pragma once

#include "streams/RowFilter.h"

#include <cstddef>
#include <memory>

namespace searchsystem {

/// The samples of a pixel and their order. Samples of 16 bits are in the machine's byte order.
enum PixelFormat : unsigned short {
  pixelGrey8 = 0,
  pixelRGB8 = 1,
  pixelBGR8 = 2,
  pixelGrey16 = 3,
  pixelRGB16 = 4,
  pixelBGR16 = 5,
};

/// Converts the pixels of an image from one format to another. Takes any number of rows.
///
/// Grey is (77 R + 150 G + 29 B + 128) / 256 at the depth of the source. Samples of 8 bits are
/// multiplied by 257, those of 16 become (v + 128) / 257. Grey is repeated for each colour.
class CTransPixelStream : public RowFilter {
public:
  CTransPixelStream() noexcept = default;

  /// Releases the stream and sets its target, the width of the image in pixels, and both formats.
  /// 1, or 0 if the target is null, the width is 0 or less, a format is unknown, a row exceeds
  /// 2^31 - 1 bytes, or memory is short.
  int CreateTransPixelStream(CIOStream *target, long width, PixelFormat fromFormat,
                             PixelFormat toFormat);

  int Release() override;

private:
  [[nodiscard]] bool hasRoom() const noexcept override { return true; }
  int takeRow(const unsigned char *row) override;
  void restart() noexcept override {}

  std::size_t width_ = 0;
  PixelFormat from_ = pixelGrey8;
  PixelFormat to_ = pixelGrey8;
  /// A row in the samples of the target and at the depth of the source; null where both have one
  /// depth.
  std::unique_ptr<unsigned char[]> between_;
};

} // namespace searchsystem
