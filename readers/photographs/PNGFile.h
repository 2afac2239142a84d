#pragma once

#include "readers/photographs/ByteRange.h"
#include "readers/photographs/PhotographReading.h"

namespace searchsystem {

[[nodiscard]] bool isPNG(const ByteRange &range);

/// Reads the chunks of a PNG file that describe it (PNG standard, third edition, 11.3.3 and
/// 11.3.4.4): texts, among them XMP, the time of creation, and blocks of other kinds written as
/// text; Exif.
void readPNG(const ByteRange &file, PhotographReading &reading);

} // namespace searchsystem
