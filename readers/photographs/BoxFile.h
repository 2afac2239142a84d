#pragma once

#include "readers/photographs/ByteRange.h"
#include "readers/photographs/PhotographReading.h"

namespace searchsystem {

/// A file of boxes (ISO/IEC 14496-12, 4.2): HEIF and AVIF, CR3, JPEG XL in its container.
[[nodiscard]] bool isBoxFile(const ByteRange &range);

/// Reads what the boxes of such a file hold of Exif and XMP.
void readBoxFile(const ByteRange &file, PhotographReading &reading);

} // namespace searchsystem
