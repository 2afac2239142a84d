#include <stddef.h>

#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/MainLoop.h"

const char *textThroughC(const char *text, char *buffer, CFIndex size) {
  CFStringRef string = CFStringCreateWithCString(NULL, text, kCFStringEncodingASCII);
  Boolean isGiven = CFStringGetCString(string, buffer, size, kCFStringEncodingUTF8);
  CFRelease(string);
  return isGiven ? buffer : NULL;
}
