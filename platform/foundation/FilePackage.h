#ifndef PLATFORM_FOUNDATION_FILEPACKAGE_H
#define PLATFORM_FOUNDATION_FILEPACKAGE_H

/* Packages, for hosts that walk through folders as searches do. */

#include "Symbol.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Whether the folder at `path` is a package, which searches take for one file and do not look into:
 * it has a known package extension, or any extension and holds Contents/Info.plist. 1, or 0, also
 * when memory is short. Any thread. */
int PFFileIsPackage(const char *path) SEARCHSYSTEM_SYMBOL(PFFileIsPackage);

#ifdef __cplusplus
}
#endif

#endif
