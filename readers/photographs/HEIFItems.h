#pragma once

#include "readers/photographs/ByteRange.h"
#include "readers/photographs/PhotographReading.h"

namespace searchsystem {

/// Reads the items of a HEIF file that describe its primary image (ISO/IEC 14496-12, 8.11; ISO/IEC
/// 23008-12, 6.5.12 and annex A). `meta` is the content of its box; extents lie in `file`.
void readHEIFItems(const ByteRange &meta, const ByteRange &file, PhotographReading &reading);

} // namespace searchsystem
