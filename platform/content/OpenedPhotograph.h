#pragma once

#include "platform/content/PhotographContent.h"

namespace searchsystem {

/// Opens the photograph at `path`, and the XMP file beside it: of `a.jpg` that is `a.jpg.xmp`, or
/// else `a.xmp`. What is no regular file, or cannot be opened, is left out. Throws
/// `std::bad_alloc`. Any thread.
[[nodiscard]] OpenPhotograph openedPhotograph(const NSString &path);

} // namespace searchsystem
