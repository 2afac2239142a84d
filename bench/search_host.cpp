// Runs one search through the C interface, as an application would, and prints what it cost.

#include "FileSharchFunction/SearchSystem/SearchSystem.h"
#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/MainLoop.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>
#include <string>

#include <poll.h>
#include <sys/resource.h>

namespace searchsystem {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

struct Options {
  std::string folder;
  std::string name = "beach";
  std::uint64_t cancelAfter = 0;
  bool isEmbedded = false;
  bool isIdleMeasured = false;
  bool hasRealClock = false;
};

double between(Clock::time_point start, Clock::time_point end) {
  return Milliseconds(end - start).count();
}

/// The time that this thread has worked, which other programs on the machine do not add to.
double threadTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// The most resident memory so far. getrusage would count what was resident before this program
/// took the place of the one that started it.
long peakMemoryInKiB() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmHWM:"))
      return std::strtol(line.c_str() + 6, nullptr, 10);
  return 0;
}

/// The reports of the search. The callback has no argument to pass them.
struct Search {
  std::uint64_t cancelAfter = 0;
  std::uint64_t results = 0;
  Clock::time_point firstResult;
  Clock::time_point cancelled;
  Clock::time_point ended;
  bool hasEnded = false;
} search;

void report(CFStringRef, int32_t state) {
  if (state == 0) {
    search.ended = Clock::now();
    search.hasEnded = true;
    CFRunLoopStop(CFRunLoopGetMain());
    return;
  }
  if (search.results++ == 0)
    search.firstResult = Clock::now();
  if (search.results == search.cancelAfter) {
    search.cancelled = Clock::now();
    SS_SearchCancel();
  }
}

struct Longest {
  double wall = 0;
  double work = 0;
  std::uint64_t count = 0;
};

/// Runs the search as an application with a loop of its own does.
Longest runEmbedded() {
  Longest longest;
  pollfd descriptor{PFMainLoopGetDescriptor(), POLLIN, 0};
  while (!search.hasEnded) {
    if (poll(&descriptor, 1, -1) <= 0)
      continue;
    const double workBefore = threadTime();
    const Clock::time_point start = Clock::now();
    PFMainLoopDispatch();
    longest.wall = std::max(longest.wall, between(start, Clock::now()));
    longest.work = std::max(longest.work, threadTime() - workBefore);
    ++longest.count;
  }
  return longest;
}

/// How often the descriptor wakes an idle loop in one second.
int wakeUpsOfIdleSecond() {
  int count = 0;
  pollfd descriptor{PFMainLoopGetDescriptor(), POLLIN, 0};
  // The library may still be freeing the memory of many results.
  for (int i = 0; i < 100 && poll(&descriptor, 1, 200) > 0; ++i)
    PFMainLoopDispatch();
  const Clock::time_point end = Clock::now() + std::chrono::seconds(1);
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0)
      return count;
    if (poll(&descriptor, 1, static_cast<int>(left.count())) > 0) {
      ++count;
      PFMainLoopDispatch();
    }
  }
}

void measure(const Options &options) {
  PFMainLoopSetClock(options.hasRealClock ? PFMainLoopClockReal : PFMainLoopClockVirtual);
  // The walk is measured.
  useSpotlight(0);
  const CFStringRef name =
      CFStringCreateWithCString(nullptr, options.name.c_str(), kCFStringEncodingUTF8);
  const CFStringRef folder =
      CFStringCreateWithFileSystemRepresentation(nullptr, options.folder.c_str());
  SearchPredicate predicate{};
  predicate.nameKeyword = name;
  predicate.searchFolder = folder;
  predicate.checkSubFolder = 1;
  predicate.isAndSearch = 1;
  predicate.resultCallback = report;
  search.cancelAfter = options.cancelAfter;

  const int wakeUpsBefore = options.isIdleMeasured ? wakeUpsOfIdleSecond() : 0;
  const long memoryBefore = peakMemoryInKiB();
  const Clock::time_point start = Clock::now();
  SS_SearchStart(&predicate);
  Longest longest;
  if (options.isEmbedded)
    longest = runEmbedded();
  else
    CFRunLoopRun();
  const long memory = peakMemoryInKiB();

  std::printf("results=%ju\n", std::uintmax_t{search.results});
  std::printf("total_ms=%.3f\n", between(start, search.ended));
  if (search.results > 0)
    std::printf("first_result_ms=%.3f\n", between(start, search.firstResult));
  if (options.isEmbedded) {
    std::printf("dispatches=%ju\n", std::uintmax_t{longest.count});
    std::printf("longest_dispatch_ms=%.3f\n", longest.wall);
    std::printf("longest_dispatch_cpu_ms=%.3f\n", longest.work);
  }
  if (search.cancelled != Clock::time_point{})
    std::printf("cancel_to_end_ms=%.3f\n", between(search.cancelled, search.ended));
  std::printf("peak_kib=%ld\npeak_growth_kib=%ld\n", memory, memory - memoryBefore);
  if (options.isIdleMeasured)
    std::printf("idle_wake_ups_before=%d\nidle_wake_ups_after=%d\n", wakeUpsBefore,
                wakeUpsOfIdleSecond());
  CFRelease(folder);
  CFRelease(name);
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  Options options;
  CLI::App application("Runs one search and prints what it cost.");
  application.add_option("folder", options.folder)->required()->check(CLI::ExistingDirectory);
  application.add_option("--name", options.name, "what names must hold")->capture_default_str();
  application.add_option("--cancel-after", options.cancelAfter,
                         "cancel at this result, and tell how long the end takes");
  application.add_flag(
      "--embedded", options.isEmbedded,
      "run the library's loop inside one of the host's, and tell its longest call");
  application.add_flag("--idle", options.isIdleMeasured,
                       "tell how often an idle loop wakes, before and after");
  application.add_flag("--real-clock", options.hasRealClock, "let delays take their time");
  CLI11_PARSE(application, argc, argv);
  // The library looks at the path as it is; only an absolute one names a folder.
  char *const resolved = realpath(options.folder.c_str(), nullptr);
  if (resolved == nullptr) {
    std::perror(options.folder.c_str());
    return 2;
  }
  options.folder = resolved;
  std::free(resolved);
  measure(options);
  return 0;
}
