#pragma once

#include "platform/imagetag/CIMAGETAG.h"

#include <cstdint>
#include <memory>

/// The tags that are asked for, and where they stand (EXIF standard, 4.6).
constexpr std::int16_t mainDirectory = 0;
constexpr std::int16_t exifDirectory = 1;
constexpr std::uint32_t tagExifVersion = 0x9000;
constexpr std::uint32_t tagDateTimeOriginal = 0x9003;
constexpr std::uint32_t tagDateTimeDigitized = 0x9004;

struct TagInfoReleaser {
  void operator()(IMAGETAG_INFO *info) const noexcept { CIMAGETAG::ReleaseInfo(info); }
};

/// Owns the record of a tag.
using TagInfo = std::unique_ptr<IMAGETAG_INFO, TagInfoReleaser>;

/// A tag of a directory; null where it is not there.
[[nodiscard]] inline TagInfo tagInfoOf(const CIMAGETAG &imageTag, std::int16_t directory,
                                       std::uint32_t tag) noexcept {
  return TagInfo(imageTag.GetInfo(directory, tag, nullptr));
}

/// Whether a tag is there and holds a text that is not empty.
[[nodiscard]] inline bool isText(const TagInfo &info) noexcept {
  return info && info->type == IMAGETAG_ASCII && info->value.bytes[0] != '\0';
}
