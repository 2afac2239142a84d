#pragma once

#include "platform/foundation/DateTimeRec.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/imagetag/CIMAGETAG.h"

/// Takes apart a text of the form "YYYY:MM:DD HH:MM:SS", in which any characters may separate the
/// numbers; it writes NULs over these. A shorter text has empty numbers. 1 when year, month and day
/// are digits or nothing, and one of them is not 0; else 0. They need not be a date that exists. An
/// hour, minute or second that is no number is 0.
int FS_CheckDate(char *text, DateTimeRec *date) noexcept;

/// The date when the photograph was taken, or, when it has none, when it was digitized, as
/// "2005/07/14 09:05:03". A text that is not a date gives "test", which no conversion to a date
/// accepts; null when there is no text. Throws `std::bad_alloc`.
[[nodiscard]] Ref<const NSString> shootingDateText(const CIMAGETAG &imageTag);
