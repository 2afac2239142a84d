#ifndef PLATFORM_FOUNDATION_VERSION_H
#define PLATFORM_FOUNDATION_VERSION_H

/* Which version of the library is loaded. A process loads one: the loader refuses a plug-in of
 * another version than the platform library that is there already. */

#include "Symbol.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Three numbers with dots between them, by semver.org; the library owns the text, which is valid
 * until the process ends. Any thread. */
const char *PFGetVersion(void) SEARCHSYSTEM_SYMBOL(PFGetVersion);

#ifdef __cplusplus
}
#endif

#endif
