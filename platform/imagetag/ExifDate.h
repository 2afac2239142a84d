#pragma once

#include "platform/foundation/DateTimeRec.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/imagetag/CIMAGETAG.h"

namespace searchsystem {

/// Parses a text of the form "YYYY:MM:DD HH:MM:SS" with any separators, which it overwrites with
/// NULs. Numbers missing from a shorter text are empty. 1 if year, month and day are digits or
/// empty and not all 0, else 0; the date need not exist. An hour, minute or second that is no
/// number is 0.
int FS_CheckDate(char *text, DateTimeRec *date) noexcept;

/// The date when the photograph was taken, or else digitized, as "2005/07/14 09:05:03". A text that
/// is not a date gives "test", which no date conversion accepts; null if there is no text. Throws
/// `std::bad_alloc`.
[[nodiscard]] Ref<const NSString> shootingDateText(const CIMAGETAG &imageTag);

} // namespace searchsystem
