#pragma once

#include "platform/imagetag/CIMAGETAG.h"

#include <cstdint>
#include <memory>

namespace searchsystem {

/// The tags in use, and their directories (EXIF standard, 4.6).
constexpr std::int16_t mainDirectory = 0;
constexpr std::int16_t exifDirectory = 1;
constexpr std::uint32_t tagExifVersion = 0x9000;
constexpr std::uint32_t tagDateTimeOriginal = 0x9003;
constexpr std::uint32_t tagDateTimeDigitized = 0x9004;

struct TagInfoReleaser {
  void operator()(IMAGETAG_INFO *info) const noexcept { CIMAGETAG::ReleaseInfo(info); }
};

/// Owns a tag's record.
using TagInfo = std::unique_ptr<IMAGETAG_INFO, TagInfoReleaser>;

/// A tag of a directory; null if missing.
[[nodiscard]] inline TagInfo tagInfoOf(const CIMAGETAG &imageTag, std::int16_t directory,
                                       std::uint32_t tag) noexcept {
  return TagInfo(imageTag.GetInfo(directory, tag, nullptr));
}

/// Whether a tag exists and holds a nonempty text.
[[nodiscard]] inline bool isText(const TagInfo &info) noexcept {
  return info && info->type == IMAGETAG_ASCII && info->value.bytes[0] != '\0';
}

} // namespace searchsystem
