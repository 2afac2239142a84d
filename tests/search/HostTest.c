/* A search as a host written in C makes it, of the folder that it is given. */

#include "FileSharchFunction/SearchSystem/SearchSystem.h"
#include "platform/foundation/MainLoop.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static SearchPredicate request;
static CFStringRef found;
static int ends, faults;

static void check(int isRight, const char *what) {
  if (!isRight)
    fprintf(stderr, "fault %d: %s\n", ++faults, what);
}

static void report(CFStringRef path, int32_t state) {
  check((path != NULL) == (state == 1), "a result has a path, the end has none");
  if (state == 1) {
    check(found == NULL, "one file has the name");
    found = CFRetain(path);
    return;
  }
  ++ends;
  CFRunLoopStop(CFRunLoopGetMain());
}

int main(int count, char **arguments) {
  check(gbSpotlight == 1 && gSearchPredicate == NULL, "the globals begin with 1 and NULL");
  useSpotlight(0);
  check(gbSpotlight == 0, "useSpotlight sets the global");
  request.nameKeyword = CFStringCreateWithCString(NULL, "a", kCFStringEncodingUTF8);
  request.searchFolder = CFStringCreateWithFileSystemRepresentation(NULL, arguments[count - 1]);
  request.resultCallback = report;
  PFMainLoopSetClock(PFMainLoopClockVirtual);
  check(SS_SearchStart(&request) == 1 && gSearchPredicate == &request, "a start answers 1");
  CFRunLoopRun();
  const char *const path = CFStringGetCStringPtr(found, kCFStringEncodingUTF8);
  check(path != NULL && strcmp(strrchr(path, '/'), "/A.pdf") == 0, "the file is found");
  check(SS_SearchCancel() == 1, "a cancel answers 1");
  check(PFMainLoopDispatch() == 0 && ends == 1, "one end, and nothing is left");
  return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
