/* A host that knows the plug-in only by its file, as one that loads plug-ins does.
 *
 *     PluginHost alone PLUGIN FOLDER            a search
 *     PluginHost fork PLUGIN FOLDER             children of a host that has not searched, and of
 * one that does PluginHost same PLUGIN PLUGIN FOLDER      two users of one file PluginHost copies
 * PLUGIN PLUGIN FOLDER    copies in two folders PluginHost refused PLUGIN PLUGIN          copies of
 * two versions */

#include <searchsystem/SearchSystem.h>

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

typedef struct {
  void *library;
  int32_t (*start)(SearchPredicate *);
  SearchPredicate request;
  int results, ends;
} Plugin;

static Plugin plugins[2];

/* A function of the platform, which the host has not linked. */
static void *function(const char *name) {
  void *const found = dlsym(plugins[0].library, name);
  if (found == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    exit(EXIT_FAILURE);
  }
  return found;
}

static void count(Plugin *plugin, CFStringRef path, int32_t state) {
  if (state == 1 && path != NULL)
    ++plugin->results;
  else
    ++plugin->ends;
}

static void reportFirst(CFStringRef path, int32_t state) { count(&plugins[0], path, state); }
static void reportSecond(CFStringRef path, int32_t state) { count(&plugins[1], path, state); }

static int load(Plugin *plugin, const char *path, const char *folder) {
  plugin->library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (plugin->library == NULL)
    return 0;
  *(void **)&plugin->start = dlsym(plugin->library, "SS_SearchStart");
  CFStringRef (*make)(CFAllocatorRef, const char *);
  *(void **)&make = function("CFStringCreateWithFileSystemRepresentation");
  plugin->request.searchFolder = make(NULL, folder);
  plugin->request.nameKeyword = make(NULL, "A");
  plugin->request.isAndSearch = 1;
  plugin->request.resultCallback = plugin == plugins ? reportFirst : reportSecond;
  return 1;
}

/* Runs the loop until that many ends have been reported. */
static void runUntil(int ends) {
  SInt32 (*run)(CFRunLoopMode, CFTimeInterval, unsigned char);
  *(void **)&run = function("CFRunLoopRunInMode");
  while (plugins[0].ends + plugins[1].ends < ends)
    if (run(NULL, 20, 1) == kCFRunLoopRunTimedOut)
      exit(EXIT_FAILURE);
}

static int isSuccess(pid_t child) {
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

static int searchOnce(void) {
  plugins[0].start(&plugins[0].request);
  runUntil(1);
  return plugins[0].results == 1 && plugins[0].ends == 1;
}

static int searchBesideChildren(void) {
  const pid_t searching = fork();
  if (searching == 0)
    _exit(searchOnce() ? 0 : 1);
  if (!isSuccess(searching))
    return 0;
  plugins[0].start(&plugins[0].request);
  const pid_t executing = fork();
  if (executing == 0)
    execlp("true", "true", (char *)NULL);
  const pid_t leaving = fork();
  if (leaving == 0)
    _exit(0);
  runUntil(1);
  return isSuccess(executing) && isSuccess(leaving) && plugins[0].results == 1;
}

int main(int argc, char **argv) {
  if (argc < 4)
    return 2;
  const char *const task = argv[1], *const folder = argv[argc - 1];
  int isRight = load(&plugins[0], argv[2], folder);
  if (strcmp(task, "alone") == 0) {
    isRight = isRight && searchOnce();
  } else if (strcmp(task, "fork") == 0) {
    isRight = isRight && searchBesideChildren();
  } else if (strcmp(task, "refused") == 0) {
    isRight = isRight && !load(&plugins[1], argv[3], folder) &&
              strstr(dlerror(), "SEARCHSYSTEM_PRIVATE_") != NULL;
  } else {
    isRight = isRight && load(&plugins[1], argv[3], folder);
    if (isRight) {
      plugins[0].start(&plugins[0].request);
      plugins[1].start(&plugins[1].request);
    }
    if (strcmp(task, "same") == 0) {
      /* The second start cancels: the one end is the second user's. */
      runUntil(1);
      isRight = plugins[0].ends == 0 && plugins[1].ends == 1 && plugins[1].results == 0;
    } else {
      runUntil(2);
      for (int i = 0; i < 2; ++i)
        isRight = isRight && plugins[i].results == 1 && plugins[i].ends == 1;
    }
  }
  if (!isRight)
    fprintf(stderr, "%s: not as it should be\n", task);
  return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
