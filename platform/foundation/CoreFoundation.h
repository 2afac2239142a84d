#ifndef PLATFORM_FOUNDATION_COREFOUNDATION_H
#define PLATFORM_FOUNDATION_COREFOUNDATION_H

/* The objects and the main loop for hosts written in C.
 *
 * The caller owns an object returned by a function with Create or Copy in its name, and releases it
 * with CFRelease; any other object must be kept with CFRetain. Objects are immutable and usable on
 * any thread; run loop functions are for the main thread, CFRunLoopStop for any. Allocators are
 * ignored: pass NULL. */

#include "Symbol.h"

#include <stdint.h>

#ifdef __cplusplus
namespace searchsystem {
class NSString;
class NSDate;
class NSArray;
} // namespace searchsystem
typedef const searchsystem::NSString *CFStringRef;
typedef const searchsystem::NSDate *CFDateRef;
typedef const searchsystem::NSArray *CFArrayRef;
extern "C" {
#else
typedef const struct searchsystem_NSString *CFStringRef;
typedef const struct searchsystem_NSDate *CFDateRef;
typedef const struct searchsystem_NSArray *CFArrayRef;
#endif

typedef const void *CFTypeRef;
typedef const struct __CFAllocator *CFAllocatorRef;
typedef struct __CFRunLoop *CFRunLoopRef;
typedef CFStringRef CFRunLoopMode;
typedef int32_t SInt32;
typedef long CFIndex;
typedef uint32_t CFStringEncoding;
typedef double CFTimeInterval;
/* Seconds since 2001-01-01 00:00 UTC. */
typedef double CFAbsoluteTime;

/* Takes a reference and returns the object; NULL gives NULL. */
CFTypeRef CFRetain(CFTypeRef object) SEARCHSYSTEM_SYMBOL(CFRetain);
/* Releases a reference; NULL is ignored. */
void CFRelease(CFTypeRef object) SEARCHSYSTEM_SYMBOL(CFRelease);

enum {
  kCFStringEncodingMacRoman = 0,
  /* Shift-JIS with the Mac's single bytes. */
  kCFStringEncodingMacJapanese = 1,
  kCFStringEncodingISOLatin1 = 0x0201,
  kCFStringEncodingASCII = 0x0600,
  kCFStringEncodingShiftJIS_X0213 = 1576,
  kCFStringEncodingUTF8 = 0x08000100
};

/* A string of the text in the given encoding; NULL if the text is NULL or invalid in it, the
 * encoding is unknown, or memory is short. */
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char *text,
                                      CFStringEncoding encoding)
    SEARCHSYSTEM_SYMBOL(CFStringCreateWithCString);

/* A string of a path with any bytes; NULL if the path is NULL or memory is short. */
CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef allocator, const char *path)
    SEARCHSYSTEM_SYMBOL(CFStringCreateWithFileSystemRepresentation);

/* Copies the text with a NUL into `buffer` of `size` bytes; 0, with the buffer's contents
 * undefined, if it does not fit or cannot be encoded. As UTF-8, the bytes of a path are copied
 * unchanged even if they are not UTF-8. */
unsigned char CFStringGetCString(CFStringRef string, char *buffer, CFIndex size,
                                 CFStringEncoding encoding) SEARCHSYSTEM_SYMBOL(CFStringGetCString);

/* The NUL-terminated text itself, valid as long as the string, if it is stored in that encoding:
 * always for UTF-8 (with the bytes of a path unchanged), for ASCII and Latin-1 if it is all ASCII.
 * Otherwise NULL. */
const char *CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding)
    SEARCHSYSTEM_SYMBOL(CFStringGetCStringPtr);

enum { kCFNotFound = -1 };

/* A part of a string, in bytes of its UTF-8 form. */
typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;

typedef CFIndex CFStringCompareFlags;
enum {
  kCFCompareCaseInsensitive = 1,
  /* Accents composed or not are equal, and nothing is found inside a composed character. */
  kCFCompareNonliteral = 16
};

/* Where `sought` first occurs in `string`, compared by code points, or as the options say: after
 * full case folding, by canonical equivalence. Searches compare names with both, or with none where
 * texts must agree to the letter. {kCFNotFound, 0} if it does not occur or is empty, if either is
 * NULL, or if memory is short. */
CFRange CFStringFind(CFStringRef string, CFStringRef sought, CFStringCompareFlags options)
    SEARCHSYSTEM_SYMBOL(CFStringFind);

/* NULL if memory is short. */
CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime time)
    SEARCHSYSTEM_SYMBOL(CFDateCreate);

/* What an array does with its elements. Ignored: an array always retains them. */
typedef struct {
  CFIndex version;
} CFArrayCallBacks;
extern const CFArrayCallBacks kCFTypeArrayCallBacks;

/* An array that retains `count` objects; NULL if the count is negative, an object is NULL, or
 * memory is short. */
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void **values, CFIndex count,
                         const CFArrayCallBacks *callBacks) SEARCHSYSTEM_SYMBOL(CFArrayCreate);

extern const CFRunLoopMode kCFRunLoopDefaultMode;

/* The main run loop, the only one. For a host with its own loop see MainLoop.h. */
CFRunLoopRef CFRunLoopGetMain(void) SEARCHSYSTEM_SYMBOL(CFRunLoopGetMain);

/* Runs the loop until CFRunLoopStop, even while there is nothing to do. */
void CFRunLoopRun(void) SEARCHSYSTEM_SYMBOL(CFRunLoopRun);

enum {
  kCFRunLoopRunFinished = 1,
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4
};

/* Runs the loop for `seconds` of real time, whatever the clock of its delays; 0 runs what is due
 * now. Ends early after CFRunLoopStop and, if `returnAfterSourceHandled`, after some work has run.
 * Returns one of the values above. The mode is ignored. */
SInt32 CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                          unsigned char returnAfterSourceHandled)
    SEARCHSYSTEM_SYMBOL(CFRunLoopRunInMode);

/* Ends the innermost run of the loop, if any. */
void CFRunLoopStop(CFRunLoopRef loop) SEARCHSYSTEM_SYMBOL(CFRunLoopStop);

#ifdef __cplusplus
}
#endif

#endif
