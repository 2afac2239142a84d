#pragma once

namespace searchsystem::ssfind {

/// The help before and after the options.
extern const char *const helpHeader;
extern const char *const helpFooter;

} // namespace searchsystem::ssfind
