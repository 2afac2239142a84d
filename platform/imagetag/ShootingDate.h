#ifndef PLATFORM_IMAGETAG_SHOOTINGDATE_H
#define PLATFORM_IMAGETAG_SHOOTINGDATE_H

/* When a photograph was taken, for hosts that show the dates by which a search compares. */

#include "platform/foundation/CoreFoundation.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads when the photograph in the JPEG or TIFF file at `path` was taken, or, where it does not say
 * that, when it was digitized. Its clock is taken for local time. 1, or 0 when the file cannot be
 * read or holds no date that exists; `date` is then left alone. Any thread. */
int PFImageGetShootingDate(const char *path, CFAbsoluteTime *date);

#ifdef __cplusplus
}
#endif

#endif
