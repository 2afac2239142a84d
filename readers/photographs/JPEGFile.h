#pragma once

#include "readers/photographs/ByteRange.h"
#include "readers/photographs/PhotographReading.h"

namespace searchsystem {

[[nodiscard]] bool isJPEG(const ByteRange &range);

/// Reads the segments of a JPEG file before its image (ISO/IEC 10918-1, annex B): Exif, XMP and
/// what continues it, Photoshop's resources, comments.
void readJPEG(const ByteRange &file, PhotographReading &reading);

} // namespace searchsystem
