#ifndef FILESHARCHFUNCTION_SEARCHSYSTEM_SEARCHSYSTEM_H
#define FILESHARCHFUNCTION_SEARCHSYSTEM_SEARCHSYSTEM_H

/* Searching for image and document files: the whole interface of libSearchSystem.so.
 *
 * A host fills a SearchPredicate, calls SS_SearchStart, and lets the main loop run
 * (CoreFoundation.h, or MainLoop.h for a host with a loop of its own). The callback in the record
 * is then called on the main thread with (path, 1) for each matching file and, at the end, exactly
 * once with (NULL, 0). Nothing is ever reported from inside SS_SearchStart or SS_SearchCancel.
 *
 *     static void found(CFStringRef path, int32_t state) {
 *       if (state == 1)
 *         puts(CFStringGetCStringPtr(path, kCFStringEncodingUTF8));
 *       else
 *         CFRunLoopStop(CFRunLoopGetMain());
 *     }
 *
 * All three functions and both variables belong to the main thread, which is the process's first
 * unless PFMainLoopBindToCurrentThread has named another. A child of fork() that was made before
 * the host's first search and first use of the main loop may use both. One made later has none of
 * the library's threads, shares the main loop's descriptor with its parent, and finds locks in any
 * state: it may only execute a program or call _exit.
 *
 * Several plug-ins of one host may load the library. What they load from one file is one library
 * with one engine, where one plug-in's start during another's search is a cancel, as described at
 * SS_SearchStart. Copies of the file in different folders have an engine and globals each, and
 * report to their own users; they all use the platform library that was loaded first, and so share
 * the main loop, its clock, and what Content.h sets. If that is of another version, the loader
 * refuses the later copy: dlopen fails, and dlerror names a version SEARCHSYSTEM_PRIVATE_.... No
 * copy is ever unloaded. Functions and variables of other libraries, whatever their names, do not
 * take the place of the library's own, unless their names hold `searchsystem` or are one of the
 * five below.
 *
 * Searched are files whose extension is tif, jpg, pdf or pct, in any case; the longer spellings
 * (jpeg, tiff, pict) are not. Deep searches, which a host has to ask for, know many more kinds and
 * find text in documents of any make: Content.h. Names that begin with a dot,
 * links to folders, packages, and the roots of other file systems mounted below the folder are left
 * out with all they hold. What cannot be read is left out without notice, unless the host asks a
 * deep search for it. Results come in no order. */

#include "../../platform/foundation/CoreFoundation.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define SEARCHSYSTEM_EXPORT __attribute__((visibility("default")))
#else
#define SEARCHSYSTEM_EXPORT
#endif

/* What a search reports. `state` is 1 for a matching file, whose full path is valid during the call
 * only (CFRetain keeps it), and 0 for the end, with NULL for the path. Always called on the main
 * thread. It may start or cancel searches and may run the main loop; results that arrive
 * meanwhile wait until it has returned. What it throws is dropped.
 *
 * The path holds the bytes of the file's name as they are, which need not be UTF-8. The end comes
 * half a second after the last source of results has ended, and a walk through folders or a list
 * counts as ended a second after its last folder. */
typedef void (*SearchResultCallback)(CFStringRef path, int32_t state);

/* One search. The host owns the record and everything that it points to, and keeps all of it
 * unchanged until the end has been reported; the library copies nothing, and does not look at it
 * after that. A field that does not matter is NULL or 0; a flag of any value but 0 counts as 1.
 *
 * At least one condition must be given: a nameKeyword, an empty one included; a contentKeyword with
 * searchExifText or searchPDFText; or an end of a range of dates. A record without any ends after
 * 0.1 seconds with no result. */
typedef struct SearchPredicate {
  /* Text that occurs in the file's name. With isAndSearch an empty text is met by every file,
   * without it by none. */
  CFStringRef nameKeyword;
  /* Text that occurs in the file, where searchExifText and searchPDFText say, in one place or the
   * other. An empty text occurs nowhere, but is no condition with isAndSearch and searchExifText
   * without searchPDFText. */
  CFStringRef contentKeyword;
  /* The range of modification dates, both ends included; NULL leaves an end open. A search through
   * the metadata index excludes both ends and ignores a range with only one. */
  CFDateRef modDateStart;
  CFDateRef modDateEnd;
  /* The range of shooting dates, both ends included; NULL leaves an end open. The camera's clock is
   * taken as local time. A file without a shooting date is outside every range. */
  CFDateRef exifDateStart;
  CFDateRef exifDateEnd;
  /* 1: look for contentKeyword in the EXIF text of JPEG and TIFF files. */
  signed char searchExifText;
  /* 1: look for contentKeyword in the text of PDF files. */
  signed char searchPDFText;
  /* 1: search the folders below searchFolder too. */
  signed char checkSubFolder;
  /* 1: texts must agree to the letter, case included; 0: in any case, and in names and EXIF text
   * with accents composed or not. */
  signed char isDistinct;
  /* 1: a file must meet every condition; 0: one is enough.
   *
   * When every condition must hold, conditions on the content narrow the kinds of file looked at:
   * a PDF keyword to pdf; an EXIF keyword or a shooting date to tif and jpg; both together to pdf
   * and jpg, without tif. Through the metadata index an EXIF condition narrows to jpg alone. A deep
   * search narrows to documents, to photographs, or to both.
   *
   * When one is enough, a search through the metadata index with a condition on the content may
   * report a file twice, unless it looks for contentKeyword in EXIF text. If searchFolder leads
   * through a link, it may even then: once with the path as given, once with the real one. */
  signed char isAndSearch;
  /* The paths of the only files to look at, as strings, or NULL to search searchFolder. An empty
   * list finds nothing, and elements that are not strings are skipped. A path listed twice is
   * reported twice. A list is never searched through the metadata index.
   *
   * A list must not hold a folder while checkSubFolder is 1: such a search looks through the list
   * again for every folder in it, reports its files again each time, and ends only when it is
   * cancelled. */
  CFArrayRef fileList;
  /* For the host; the library never looks at it. */
  int32_t hostValue;
  /* The path of the folder to search; NULL finds nothing. Results of a walk begin with it as it is
   * given here, without slashes at its end; those of a search through the metadata index begin with
   * the real path of that folder, with links resolved. A relative path
   * starts at the process's working folder, which must not change while the search runs.
   *
   * A walk takes blanks at the end of the name as part of it. The index does so if such a
   * folder exists, and ignores them otherwise; with checkSubFolder 0 it finds nothing in a folder
   * whose name ends with blanks. */
  CFStringRef searchFolder;
  /* Where results and the end are reported; with NULL nothing is reported. */
  SearchResultCallback resultCallback;
} SearchPredicate;

/* Whether a search may use the system's metadata index: 1 at the start. Set it with useSpotlight.
 */
extern SEARCHSYSTEM_EXPORT signed char gbSpotlight;

/* The record of the most recent start; NULL before the first. It is not cleared when a search has
 * ended. For the host to read only. */
extern SEARCHSYSTEM_EXPORT SearchPredicate *gSearchPredicate;

/* Allows (non-zero) or forbids (0) the use of the system's metadata index, from the next start on;
 * a running search is not affected. SS_SearchCancel without a search prepares the next one
 * already: if the index was forbidden then and is allowed before the start, the next search of a
 * folder asks no index and does not walk in its place, so that its name and date find nothing. */
SEARCHSYSTEM_EXPORT void useSpotlight(signed char isAllowed);

/* Starts a search and returns at once, always with 1; only the callback reports how it went.
 *
 * One search runs at a time. A start before the end of the one before has been reported starts
 * nothing: it cancels the running search. Results still on their way then go to the callback of the
 * older record, the one end notification to that of the newer, and both records must stay until
 * then. So a host that wants to search for something else cancels, waits for the end, and starts
 * then; the end callback is a good place for it. A NULL record is ignored. */
SEARCHSYSTEM_EXPORT int32_t SS_SearchStart(SearchPredicate *predicate);

/* Asks the running search to stop, and returns at once, always with 1. Results that are on their
 * way may still arrive, but no file is read any further, and none whose content is still to be
 * tested counts as a match. The end is reported as always, after the delays described above,
 * however large the files being read are; it waits only for what the system is reading or listing.
 * Without a search nothing is reported. */
SEARCHSYSTEM_EXPORT int32_t SS_SearchCancel(void);

#ifdef __cplusplus
}
#define SEARCHSYSTEM_LAYOUT_CHECK(condition) static_assert(condition, "layout of SearchPredicate")
#else
#define SEARCHSYSTEM_LAYOUT_CHECK(condition) _Static_assert(condition, "layout of SearchPredicate")
#endif

#if UINTPTR_MAX == 0xFFFFFFFF
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, nameKeyword) == 0);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, contentKeyword) == 4);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, modDateStart) == 8);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, modDateEnd) == 12);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, exifDateStart) == 16);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, exifDateEnd) == 20);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, searchExifText) == 24);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, searchPDFText) == 25);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, checkSubFolder) == 26);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, isDistinct) == 27);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, isAndSearch) == 28);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, fileList) == 32);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, hostValue) == 36);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, searchFolder) == 40);
SEARCHSYSTEM_LAYOUT_CHECK(offsetof(SearchPredicate, resultCallback) == 44);
SEARCHSYSTEM_LAYOUT_CHECK(sizeof(SearchPredicate) == 48);
#endif

#undef SEARCHSYSTEM_LAYOUT_CHECK

#endif
