#ifndef PLATFORM_IMAGETAG_SHOOTINGDATE_H
#define PLATFORM_IMAGETAG_SHOOTINGDATE_H

/* When a photograph was taken, for hosts that show the dates that a search compares. */

#include "../foundation/CoreFoundation.h"
#include "../foundation/Symbol.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads when the photograph in the JPEG or TIFF file at `path` was taken, or else digitized, taken
 * as local time. 1, or 0, with `date` unchanged, if the file cannot be read or holds no existing
 * date. Any thread. */
int PFImageGetShootingDate(const char *path, CFAbsoluteTime *date)
    SEARCHSYSTEM_SYMBOL(PFImageGetShootingDate);

#ifdef __cplusplus
}
#endif

#endif
