#pragma once

#include "platform/imagetag/ImageBytes.h"

#include <cstddef>
#include <optional>

namespace searchsystem {

/// Iterates over the segments of a JPEG file up to its image (JPEG standard, annex B), skipping
/// fill bytes and stray data. Takes time linear in the bytes.
///
/// Ownership: borrows the bytes. Threads: one at a time.
class JPEGSegments {
public:
  explicit JPEGSegments(ImageBytes bytes) noexcept : bytes_(bytes) {}

  [[nodiscard]] static bool isJPEG(ImageBytes bytes) noexcept {
    return bytes.part(0, 2) == "\xFF\xD8";
  }

  /// The content of the next Exif block without its name (EXIF standard, 4.5.4), possibly
  /// truncated; none after the last.
  [[nodiscard]] std::optional<ImageBytes> nextExif() noexcept;

private:
  /// Moves to the next byte that is 0xFF, or that is not; false if there is none.
  [[nodiscard]] bool skipTo(bool isFill) noexcept;

  ImageBytes bytes_;
  std::size_t place_ = 0;
};

} // namespace searchsystem
