#ifndef PLATFORM_METADATA_METADATAINDEX_H
#define PLATFORM_METADATA_METADATAINDEX_H

/* The index behind the metadata query, as a host shows it to its user: a cache, which costs speed
 * and nothing else when it is gone. */

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
  /* What the index takes on the disk, in bytes. */
  int64_t size;
  /* How many folders are recorded, and how many names their records hold. */
  int64_t folders;
  int64_t entries;
} PFMetadataIndexStatus;

/* Where the index is, or would be: the full path of its file. NULL where the user has no cache
 * folder that could hold one. The text stays the library's and is valid until the process ends.
 * Main thread. */
const char *PFMetadataIndexGetPath(void);

/* Tells what the index holds; all zero where there is none. 1, or 0 when there is one that cannot
 * be read at present, and then only its size is told. Main thread. */
int PFMetadataIndexGetStatus(PFMetadataIndexStatus *status);

/* Removes the index. 1 when there is none any more, else 0. Searches that use it at that moment
 * find what they would have found. Main thread. */
int PFMetadataIndexClear(void);

#ifdef __cplusplus
}
#endif

#endif
