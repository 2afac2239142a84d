#pragma once

namespace ssfind {

/// What the help says before and after the options.
extern const char *const helpHeader;
extern const char *const helpFooter;

} // namespace ssfind
