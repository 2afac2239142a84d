#pragma once

#include "readers/photographs/ByteRange.h"
#include "readers/photographs/PhotographReading.h"

namespace searchsystem {

[[nodiscard]] bool isWebP(const ByteRange &range);

/// Reads the chunks `EXIF` and `XMP ` of a WebP file (RFC 9649, 2.7.1.5).
void readWebP(const ByteRange &file, PhotographReading &reading);

} // namespace searchsystem
