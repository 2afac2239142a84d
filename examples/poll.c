/* A host with a loop of its own, around poll(2). Looks for one text in the names of files, is told
 * to look for another one as soon as something has been found, and prints all that it is given.
 *
 *     cc poll.c -o poll $(pkg-config --cflags --libs searchsystem)
 *     ./poll FOLDER TEXT OTHER-TEXT */

#include <searchsystem/MainLoop.h>
#include <searchsystem/SearchSystem.h>

#include <poll.h>
#include <stdio.h>

static SearchPredicate search;
static const char *next;
static int isOver;

static void start(const char *text) {
  search.nameKeyword = CFStringCreateWithCString(NULL, text, kCFStringEncodingUTF8);
  SS_SearchStart(&search);
}

static void report(CFStringRef path, int32_t state) {
  if (state == 1) {
    puts(CFStringGetCStringPtr(path, kCFStringEncodingUTF8));
    if (next != NULL)
      SS_SearchCancel(); /* The end is reported nevertheless, and only then can another start. */
    return;
  }
  CFRelease(search.nameKeyword);
  isOver = next == NULL;
  if (!isOver)
    start(next);
  next = NULL;
}

int main(int argc, char **argv) {
  if (argc != 4)
    return 2;
  search.searchFolder = CFStringCreateWithFileSystemRepresentation(NULL, argv[1]);
  search.checkSubFolder = search.isAndSearch = 1;
  search.resultCallback = report;
  next = argv[3];
  start(argv[2]);
  struct pollfd events = {PFMainLoopGetDescriptor(), POLLIN, 0};
  while (!isOver && poll(&events, 1, -1) >= 0)
    PFMainLoopDispatch();
  CFRelease(search.searchFolder);
  return 0;
}
