#pragma once

#include "readers/photographs/ByteRange.h"
#include "readers/photographs/PhotographReading.h"

namespace searchsystem {

[[nodiscard]] bool isPhotoshopFile(const ByteRange &range);

/// Reads a Photoshop document (Photoshop file formats, file header and image
/// resources section).
void readPhotoshopFile(const ByteRange &file, PhotographReading &reading);

/// Reads a sequence of image resource blocks, as it stands in a document or in a photograph: IPTC,
/// Exif, XMP.
void readPhotoshopResources(const ByteRange &resources, PhotographReading &reading);

} // namespace searchsystem
