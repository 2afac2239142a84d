#pragma once

#include "readers/photographs/PhotographReading.h"

#include <string_view>

namespace searchsystem {

/// Reads a text of a PNG file: the content of a chunk of the kind `tEXt`, `zTXt` or `iTXt` (PNG
/// standard, third edition, 11.3.3). XMP and blocks of other kinds written as text are read as what
/// they are. Names of programs, times, and what some programs repeat of other blocks under keywords
/// such as `exif:Make` count as no description.
void readPNGText(std::string_view kind, std::string_view chunk, PhotographReading &reading);

} // namespace searchsystem
