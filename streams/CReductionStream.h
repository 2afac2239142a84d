#pragma once

#include "streams/RowFilter.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace searchsystem {

/// How a pixel of a reduced image is made.
enum ReductionMethod : unsigned short {
  reductionNearest = 0,  ///< pixel (x * width / newWidth, y * height / newHeight)
  reductionBilinear = 1, ///< between the four pixels around its centre, rounded to nearest
  reductionAverage = 2,  ///< the average of all pixels that it covers, parts of pixels counted
};

/// Reduces an image in one pass, in memory of a few rows. An image that ends early gives the rows
/// that were complete by then.
class CReductionStream : public RowFilter {
public:
  CReductionStream() noexcept = default;

  /// Releases the stream and sets its target, the sizes of the image before and after in pixels,
  /// and the bytes of a pixel, 1 or 3, each a sample of its own. 1, or 0 if the target is null, a
  /// size is 0 or less or above 2^24, the new image is larger in a direction, the method is
  /// unknown, or memory is short.
  int CreateReductionStream(CIOStream *target, long width, long height, long pixelBytes,
                            long newWidth, long newHeight, ReductionMethod method);

  int Release() override;

private:
  [[nodiscard]] bool hasRoom() const noexcept override { return rows_ < height_; }
  int takeRow(const unsigned char *row) override;
  void restart() noexcept override;

  int takeNearest(const unsigned char *row);
  int takeBilinear(const unsigned char *row);
  int takeAverage(const unsigned char *row);
  void addToSums(const unsigned char *row, std::uint32_t weight) noexcept;
  void averageSums() noexcept;

  std::uint64_t width_ = 0;
  std::uint64_t height_ = 0;
  std::uint64_t pixelBytes_ = 0;
  std::uint64_t newWidth_ = 0;
  std::uint64_t newHeight_ = 0;
  ReductionMethod method_ = reductionNearest;
  std::uint64_t rows_ = 0;                       ///< of the image, taken so far
  std::uint64_t newRows_ = 0;                    ///< handed on so far
  std::unique_ptr<unsigned char[]> previousRow_; ///< bilinear
  std::unique_ptr<std::uint32_t[]> sums_; ///< average: of each byte over the new row's height
};

} // namespace searchsystem
