#pragma once

#include "readers/ByteSource.h"
#include "readers/ReadResult.h"
#include "readers/photographs/PhotographSink.h"

namespace searchsystem {

/// Reads what a photograph says about itself: texts with the names of their fields, when it was
/// taken, with which camera. It may be a JPEG, TIFF or BigTIFF, PNG, WebP, HEIF, AVIF, JPEG XL or
/// Photoshop file, or one of the camera makers' raw formats; its content decides which.
///
/// Of several dates the first of these counts, as the camera's clock said: Exif DateTimeOriginal,
/// Exif DateTimeDigitized, XMP exif:DateTimeOriginal, photoshop:DateCreated, xmp:CreateDate, IPTC
/// date and time created, PNG creation time.
///
/// `sidecar`, an XMP file beside the photograph, may be null. Its fields follow those of the
/// photograph and bear names of their own; its dates follow those of the same property.
///
/// `none` also for a photograph without descriptions, and where the sink has stopped it; `damaged`
/// for what is no photograph; `tooLarge` where the reading met a limit of memory, time or text.
/// What was found before is handed over in any case. Time and memory are bounded, whatever the
/// bytes say. Throws nothing but `std::bad_alloc`.
[[nodiscard]] UnreadReason readPhotograph(ByteSource &source, ByteSource *sidecar,
                                          PhotographSink &sink);

} // namespace searchsystem
