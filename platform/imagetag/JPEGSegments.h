#pragma once

#include <optional>
#include <string_view>

/// Goes through the segments of a JPEG file up to its image (JPEG standard, annex B), over fill
/// bytes and what does not belong there. It takes time linear in the bytes given.
///
/// Ownership: borrows the bytes. Threads: one at a time.
class JPEGSegments {
public:
  explicit JPEGSegments(std::string_view bytes) noexcept : rest_(bytes) {}

  [[nodiscard]] static bool isJPEG(std::string_view bytes) noexcept {
    return bytes.starts_with("\xFF\xD8");
  }

  /// The content of the next Exif block without its name (EXIF standard, 4.5.4), as much of it as
  /// is there; none after the last.
  [[nodiscard]] std::optional<std::string_view> nextExif() noexcept;

private:
  struct Segment {
    unsigned char marker;
    std::string_view content;
  };

  [[nodiscard]] std::optional<Segment> nextSegment() noexcept;

  std::string_view rest_;
};
