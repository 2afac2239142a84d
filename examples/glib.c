/* A host with GLib's main loop, as programs with GTK have. Looks for one text in the names of
 * files, is told to look for another one as soon as something has been found, and prints all that
 * it is given.
 *
 *     cc glib.c -o glib $(pkg-config --cflags --libs searchsystem glib-2.0)
 *     ./glib FOLDER TEXT OTHER-TEXT */

#include <searchsystem/MainLoop.h>
#include <searchsystem/SearchSystem.h>

#include <glib-unix.h>

static SearchPredicate search;
static const char *next;
static GMainLoop *loop;

static void start(const char *text) {
  search.nameKeyword = CFStringCreateWithCString(NULL, text, kCFStringEncodingUTF8);
  SS_SearchStart(&search);
}

static void report(CFStringRef path, int32_t state) {
  if (state == 1) {
    g_print("%s\n", CFStringGetCStringPtr(path, kCFStringEncodingUTF8));
    if (next != NULL)
      SS_SearchCancel(); /* The end is reported nevertheless, and only then can another start. */
    return;
  }
  CFRelease(search.nameKeyword);
  if (next != NULL)
    start(next);
  else
    g_main_loop_quit(loop);
  next = NULL;
}

static gboolean dispatch(gint fd, GIOCondition condition, gpointer data) {
  (void)fd, (void)condition, (void)data;
  PFMainLoopDispatch();
  return G_SOURCE_CONTINUE;
}

int main(int argc, char **argv) {
  if (argc != 4)
    return 2;
  loop = g_main_loop_new(NULL, FALSE);
  g_unix_fd_add(PFMainLoopGetDescriptor(), G_IO_IN, dispatch, NULL);
  PFMainLoopSetClock(PFMainLoopClockVirtual); /* The end follows the last result at once. */
  search.searchFolder = CFStringCreateWithFileSystemRepresentation(NULL, argv[1]);
  search.checkSubFolder = search.isAndSearch = 1;
  search.resultCallback = report;
  next = argv[3];
  start(argv[2]);
  g_main_loop_run(loop);
  CFRelease(search.searchFolder);
  g_main_loop_unref(loop);
  return 0;
}
