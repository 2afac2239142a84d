#pragma once

#include "readers/photographs/ByteRange.h"
#include "readers/photographs/PhotographReading.h"

namespace searchsystem {

[[nodiscard]] bool isCIFF(const ByteRange &range);

/// Reads a CRW file (CIFF 1.0, revision 4): its description, maker and model, and
/// when it was captured.
void readCIFF(const ByteRange &file, PhotographReading &reading);

} // namespace searchsystem
