#ifndef PLATFORM_METADATA_METADATAINDEX_H
#define PLATFORM_METADATA_METADATAINDEX_H

/* The index of the metadata query, for hosts that show it to their user. It is a cache: losing it
 * costs only speed. */

#include "../foundation/Symbol.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
  /* Its size on the disk, in bytes. */
  int64_t size;
  /* How many folders are recorded, and how many names their records hold. */
  int64_t folders;
  int64_t entries;
} PFMetadataIndexStatus;

/* The full path of the index, whether it exists or not. NULL if the user has no cache folder. The
 * library owns the text; it is valid until the process ends. Main thread. */
const char *PFMetadataIndexGetPath(void) SEARCHSYSTEM_SYMBOL(PFMetadataIndexGetPath);

/* Reports what the index holds; all zero if there is none. Returns 1, or 0 if it exists and cannot
 * be read now; then only its size is set. Main thread. */
int PFMetadataIndexGetStatus(PFMetadataIndexStatus *status)
    SEARCHSYSTEM_SYMBOL(PFMetadataIndexGetStatus);

/* Removes the index. Returns 1 if there is none afterwards, else 0. Searches that are using it find
 * the same files as before. Main thread. */
int PFMetadataIndexClear(void) SEARCHSYSTEM_SYMBOL(PFMetadataIndexClear);

#ifdef __cplusplus
}
#endif

#endif
