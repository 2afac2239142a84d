/* Searches as a host written in C makes them, of the folder that it is given, which holds A.pdf and
 * b.jpg: one through the folder and, started when that has ended, one of a list. */

#include <searchsystem/MainLoop.h>
#include <searchsystem/SearchSystem.h>
#include <searchsystem/Version.h>

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

static void checkFound(const char *name) {
  const char *const path = CFStringGetCStringPtr(found, kCFStringEncodingUTF8);
  check(path != NULL && strcmp(strrchr(path, '/'), name) == 0, "the file is found");
}

static void report(CFStringRef path, int32_t state) {
  check((path != NULL) == (state == 1), "a result has a path, the end has none");
  if (state == 1) {
    check(found == NULL, "one file matches");
    found = CFRetain(path);
    return;
  }
  ++ends;
  CFRunLoopStop(CFRunLoopGetMain());
}

static void searchList(const char *folder) {
  char path[4096];
  snprintf(path, sizeof path, "%s/b.jpg", folder);
  const void *const listed = CFStringCreateWithFileSystemRepresentation(NULL, path);
  request.fileList = CFArrayCreate(NULL, (const void **)&listed, 1, &kCFTypeArrayCallBacks);
  CFRelease(listed);
  CFRelease(request.nameKeyword);
  request.nameKeyword = CFStringCreateWithCString(NULL, "B", kCFStringEncodingUTF8);
  CFRelease(found);
  found = NULL;
  gbSpotlight = 1;
  gSearchPredicate = NULL;
  check(SS_SearchStart(&request) == 1 && gSearchPredicate == &request, "another start answers 1");
  while (ends == 1)
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 20, 1);
  checkFound("/b.jpg");
}

int main(int count, char **arguments) {
  const char *const folder = arguments[count - 1];
  check(gbSpotlight == 1 && gSearchPredicate == NULL, "the globals begin with 1 and NULL");
  useSpotlight(0);
  check(gbSpotlight == 0, "useSpotlight sets the global");
  check(strchr(PFGetVersion(), '.') != NULL, "the library has a version");
  request.nameKeyword = CFStringCreateWithCString(NULL, "a", kCFStringEncodingUTF8);
  request.searchFolder = CFStringCreateWithFileSystemRepresentation(NULL, folder);
  request.resultCallback = report;
  PFMainLoopSetClock(PFMainLoopClockVirtual);
  check(SS_SearchStart(&request) == 1 && gSearchPredicate == &request, "a start answers 1");
  CFRunLoopRun();
  checkFound("/A.pdf");

  searchList(folder);
  check(SS_SearchCancel() == 1, "a cancel answers 1");
  check(PFMainLoopDispatch() == 0 && ends == 2, "one end each, and nothing is left");
  return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
