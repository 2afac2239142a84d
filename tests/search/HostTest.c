/* A search as a host written in C makes it. */

#include "FileSharchFunction/SearchSystem/SearchSystem.h"
#include "platform/foundation/MainLoop.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static int faults;
static char told[64];

static void check(int isRight, const char *what) {
  if (!isRight)
    fprintf(stderr, "fault %d: %s\n", ++faults, what);
}

static void report(CFStringRef path, int32_t state) {
  check((path != NULL) == (state == 1), "a result has a path, the end has none");
  strcat(told, state == 1 ? strrchr(CFStringGetCStringPtr(path, kCFStringEncodingUTF8), '/') : "!");
  if (state == 0)
    CFRunLoopStop(CFRunLoopGetMain());
}

int main(void) {
  char folder[] = "/tmp/host-XXXXXX";
  check(mkdtemp(folder) != NULL && chdir(folder) == 0, folder);
  const char *const names[] = {"./b.jpg", "./a.txt", "./A.pdf"};
  const void *files[3];
  for (int i = 0; i < 3; ++i) {
    files[i] = CFStringCreateWithFileSystemRepresentation(NULL, names[i]);
    fclose(fopen(names[i], "w"));
  }
  SearchPredicate request = {0};
  request.nameKeyword = CFStringCreateWithCString(NULL, "a", kCFStringEncodingUTF8);
  request.searchFolder = CFStringCreateWithFileSystemRepresentation(NULL, folder);
  request.resultCallback = report;
  PFMainLoopSetClock(PFMainLoopClockVirtual);

  check(gbSpotlight == 1 && gSearchPredicate == NULL, "the globals begin with 1 and NULL");
  useSpotlight(0);
  check(gbSpotlight == 0, "useSpotlight sets the global");
  check(SS_SearchStart(&request) == 1 && gSearchPredicate == &request, "a start answers 1");
  CFRunLoopRun();
  check(strcmp(told, "/A.pdf!") == 0, told);

  told[0] = '\0';
  request.modDateStart = CFDateCreate(NULL, 0);
  request.fileList = CFArrayCreate(NULL, files, 3, &kCFTypeArrayCallBacks);
  SS_SearchStart(&request);
  CFRunLoopRun();
  check(strcmp(told, "/b.jpg/A.pdf!") == 0, told);
  check(SS_SearchCancel() == 1, "a cancel answers 1");
  check(PFMainLoopDispatch() == 0, "nothing is left");

  for (int i = 0; i < 3; ++i) {
    CFRelease(files[i]);
    unlink(names[i]);
  }
  CFRelease(request.nameKeyword);
  CFRelease(request.searchFolder);
  CFRelease(request.modDateStart);
  CFRelease(request.fileList);
  rmdir(folder);
  return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
