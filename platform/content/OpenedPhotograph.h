#pragma once

#include "platform/content/PhotographContent.h"
#include "platform/foundation/FileItem.h"

#include <cstddef>
#include <string_view>

namespace searchsystem {

/// What XMP files end in.
constexpr std::string_view sidecarEnding = ".xmp";

/// Opens a file; none if it is no regular file, or cannot be opened. Any thread.
[[nodiscard]] OpenFile openedFile(FileItem &item) noexcept;

/// Opens a photograph, or takes it where it is open, and opens the XMP file beside it: of `a.jpg`
/// that is `a.jpg.xmp`, or else `a.xmp`. What cannot be opened is left out. Throws
/// `std::bad_alloc`. Any thread.
[[nodiscard]] OpenPhotograph openedPhotograph(PhotographToRead photograph);

/// How many photographs a thread may hold open: few where the host may open few files, so that all
/// threads together take no more than a quarter of these. Any thread.
[[nodiscard]] std::size_t mostOpenPhotographs() noexcept;

} // namespace searchsystem
