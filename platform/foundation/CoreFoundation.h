#ifndef PLATFORM_FOUNDATION_COREFOUNDATION_H
#define PLATFORM_FOUNDATION_COREFOUNDATION_H

/* The objects and the main loop as a host written in C sees them.
 *
 * An object that a function with Create or Copy in its name returns belongs to the caller, who
 * gives it back with CFRelease; one that comes from anywhere else belongs to somebody else and is
 * kept with CFRetain. Objects are immutable and may be used by any thread; the run loop functions
 * belong to the main thread, CFRunLoopStop to any. Allocators are ignored: pass NULL. */

#include <stdint.h>

#ifdef __cplusplus
class NSString;
class NSDate;
class NSArray;
typedef const NSString *CFStringRef;
typedef const NSDate *CFDateRef;
typedef const NSArray *CFArrayRef;
extern "C" {
#else
typedef const struct NSString *CFStringRef;
typedef const struct NSDate *CFDateRef;
typedef const struct NSArray *CFArrayRef;
#endif

typedef const void *CFTypeRef;
typedef const struct __CFAllocator *CFAllocatorRef;
typedef struct __CFRunLoop *CFRunLoopRef;
typedef CFStringRef CFRunLoopMode;
typedef unsigned char Boolean;
typedef int32_t SInt32;
typedef uint32_t UInt32;
typedef long CFIndex;
typedef UInt32 CFStringEncoding;
typedef double CFTimeInterval;
/* Seconds since 2001-01-01 00:00 UTC. */
typedef double CFAbsoluteTime;

/* Takes a reference and returns the object; NULL gives NULL. */
CFTypeRef CFRetain(CFTypeRef object);
/* Gives a reference back; NULL is ignored. */
void CFRelease(CFTypeRef object);

enum {
  kCFStringEncodingMacRoman = 0,
  /* Shift-JIS with the Mac's single bytes. */
  kCFStringEncodingMacJapanese = 1,
  kCFStringEncodingISOLatin1 = 0x0201,
  kCFStringEncodingASCII = 0x0600,
  kCFStringEncodingShiftJIS_X0213 = 1576,
  kCFStringEncodingUTF8 = 0x08000100
};

/* A string of the text in the given encoding; NULL when the text is NULL or not valid in it, when
 * the encoding is unknown, or when memory is short. */
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char *text,
                                      CFStringEncoding encoding);

/* A string of a path, whatever bytes it holds; NULL when the path is NULL or memory is short. */
CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef allocator, const char *path);

/* Copies the text with a NUL into `buffer` of `size` bytes; 0 when it does not fit, or cannot be
 * given in the encoding, and then the buffer holds nothing of use. As UTF-8 the bytes of a path are
 * given as they are, also where they are not UTF-8. */
Boolean CFStringGetCString(CFStringRef string, char *buffer, CFIndex size,
                           CFStringEncoding encoding);

/* The text itself, ended by a NUL and valid as long as the string, if it is stored in that
 * encoding: always for UTF-8 (with the bytes of a path as they are), for ASCII and Latin-1 when it
 * holds ASCII only. Otherwise NULL. */
const char *CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding);

enum { kCFNotFound = -1 };

/* A part of a string, in bytes of its UTF-8 form. */
typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;

typedef CFIndex CFStringCompareFlags;
enum { kCFCompareCaseInsensitive = 1 };

/* Where `sought` first occurs in `string`, compared code point by code point, or after full case
 * folding with kCFCompareCaseInsensitive, the only option known. {kCFNotFound, 0} when it does not
 * occur or is empty, when either is NULL, or when memory is short. */
CFRange CFStringFind(CFStringRef string, CFStringRef sought, CFStringCompareFlags options);

/* NULL when memory is short. */
CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime time);

/* What an array does with its elements. Ours always keeps them, whatever it is told. */
typedef struct {
  CFIndex version;
} CFArrayCallBacks;
extern const CFArrayCallBacks kCFTypeArrayCallBacks;

/* An array of `count` objects, each of which it keeps; NULL when the count is negative, an object
 * is NULL, or memory is short. */
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void **values, CFIndex count,
                         const CFArrayCallBacks *callBacks);

extern const CFRunLoopMode kCFRunLoopDefaultMode;

/* The main run loop, the only one there is. See MainLoop.h for a host with a loop of its own. */
CFRunLoopRef CFRunLoopGetMain(void);

/* Runs the loop until CFRunLoopStop, also while there is nothing to do. */
void CFRunLoopRun(void);

enum {
  kCFRunLoopRunFinished = 1,
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4
};

/* Runs the loop for so many seconds of real time, whatever clock the loop's own delays follow; with
 * 0 what is due now. Ends early with CFRunLoopStop, and, if `returnAfterSourceHandled`, after
 * something was run. Answers with one of the values above. The mode is ignored. */
SInt32 CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                          Boolean returnAfterSourceHandled);

/* Ends the innermost run of the loop, if it is running. */
void CFRunLoopStop(CFRunLoopRef loop);

#ifdef __cplusplus
}
#endif

#endif
