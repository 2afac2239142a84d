#pragma once

#include "readers/photographs/ByteRange.h"
#include "readers/photographs/PhotographReading.h"

namespace searchsystem {

[[nodiscard]] bool isRAF(const ByteRange &range);

/// Reads a RAF file, which is described by the JPEG file in it.
void readRAF(const ByteRange &file, PhotographReading &reading);

} // namespace searchsystem
