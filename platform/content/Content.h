#ifndef PLATFORM_CONTENT_CONTENT_H
#define PLATFORM_CONTENT_CONTENT_H

/* How deep a search looks into files, for hosts in C.
 *
 * A plain search knows four extensions and reads PDF documents of one layout and the first bytes of
 * photographs. A deep one knows many kinds of files and finds text in documents of any make, and in
 * photographs what Exif, IPTC, XMP and the container's own texts say, wherever in the file they
 * stand, or an XMP file beside it (of a.jpg a.jpg.xmp, or else a.xmp): titles, captions, keywords,
 * people, places, authors, rights, comments, camera and lens. A photograph was taken at the first
 * of these dates that it has, by the camera's clock: Exif original, Exif digitized, XMP
 * exif:DateTimeOriginal, photoshop:DateCreated, xmp:CreateDate, IPTC created, PNG creation.
 *
 * It has them read by a program of its own, searchsystem-reader, in processes that can do nothing
 * but read what they were lent: one for each document, or for some dozens of photographs. The
 * program lies beside the platform library, or where it was installed with it. The host sees no
 * child and no signal of theirs. (Where the host adopts orphans, as the first process of a
 * container does or one that has asked for it with PR_SET_CHILD_SUBREAPER, it gets SIGCHLD when the
 * program ends, some ten seconds after the last search, and has to reap it like the others.)
 *
 * A condition on content holds if the plain reading says so or the deep one does, so a deep search
 * finds all that a plain one does. With such a condition it walks through the folder, or the list,
 * and asks no metadata index.
 *
 * All functions but the last belong to the main thread. What they set is process-wide and
 * in force from the next start of a search on. */

#include "../foundation/CoreFoundation.h"
#include "../foundation/Symbol.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { PFContentPlain = 0, PFContentDeep = 1 };

/* PFContentPlain at the start; an unknown value means it, too. */
void PFContentSetDepth(int depth) SEARCHSYSTEM_SYMBOL(PFContentSetDepth);

/* Narrows deep searches to files with these extensions: strings without a dot, in any case. An
 * extension that is not among those of a deep search is searched for by name and date. NULL, as at
 * the start, means all that a deep search knows. 0 when memory is short, and then nothing has
 * changed. */
int PFContentSetExtensions(CFArrayRef extensions) SEARCHSYSTEM_SYMBOL(PFContentSetExtensions);

/* Why the content of a file could not be tested. A photograph without descriptions was read. */
enum {
  PFContentNeedsPassword = 1,
  /* Or something else than its extension says. */
  PFContentDamaged = 2,
  /* A document that shows pages and not a letter, as a scan does. */
  PFContentNoText = 3,
  PFContentTooLarge = 4,
  PFContentTookTooLong = 5,
  PFContentReaderCrashed = 6,
  PFContentCannotBeOpened = 7,
  /* The reader program is not there, does not fit, or cannot be started. */
  PFContentNoReader = 8
};

/* `path` is borrowed, and `reason` one of the values above. */
typedef void (*PFContentUnreadCallback)(CFStringRef path, int32_t reason, void *context);

/* Names who is told of the files that a deep search could not read: each at most once in a search,
 * on the main thread, before its end is reported. NULL, as at the start, for nobody. */
void PFContentSetUnreadCallback(PFContentUnreadCallback callback, void *context)
    SEARCHSYSTEM_SYMBOL(PFContentSetUnreadCallback);

/* What a photograph says of itself in a deep reading. */
typedef struct {
  /* 1 if `date` is when it was taken, by the camera's clock as local time; else 0. */
  int hasDate;
  CFAbsoluteTime date;
  /* Of the camera; NULL where it is not said. The caller releases them. */
  CFStringRef maker;
  CFStringRef model;
} PFPhotograph;

/* Has the photograph at `path` read as deep searches read it. 1, or 0 if not all of it could be
 * read; `photograph` is written in any case, with what was found. Waits for the disk and the
 * reader: some 0.1 ms, but as long as a photograph made to take long may, 30 seconds at most. May
 * be called in a search's callback. */
int PFContentCopyPhotograph(CFStringRef path, PFPhotograph *photograph)
    SEARCHSYSTEM_SYMBOL(PFContentCopyPhotograph);

/* How far deep searches with a condition on content have come since the process began; what the
 * running one adds is the difference to an earlier call. */
typedef struct {
  /* That were listed. */
  uint64_t folders;
  /* Whose content was tested, one that could not be read included. */
  uint64_t files;
  /* That could not be read. */
  uint64_t unread;
} PFContentProgress;

/* Any thread. */
void PFContentGetProgress(PFContentProgress *progress) SEARCHSYSTEM_SYMBOL(PFContentGetProgress);

#ifdef __cplusplus
}
#endif

#endif
