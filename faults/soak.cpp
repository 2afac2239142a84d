// Searches a changing tree in one process for a given time, and compares the resources that the
// process holds at the end with those after a first part of the time.
//
//     soak [SECONDS]

#include "faults/Process.h"
#include "faults/Searches.h"
#include "faults/Verdict.h"
#include "platform/metadata/IndexPlace.h"
#include "testing/VirtualClock.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <malloc.h>
#include <random>

namespace searchsystem {

namespace {

using Clock = std::chrono::steady_clock;

/// Makes, renames and removes files and folders beside the small tree; their number stays bounded.
void change(TemporaryTree &tree, std::mt19937 &random) {
  const std::string folder = "changing/" + std::to_string(random() % 40);
  const std::string name = folder + "/" + std::to_string(random() % 50) + ".jpg";
  std::error_code error;
  switch (random() % 4) {
  case 0:
    std::filesystem::remove_all(tree.path(folder), error);
    break;
  case 1:
    std::filesystem::rename(tree.path(folder), tree.path(folder + "x"), error);
    std::filesystem::remove_all(tree.path(folder + "x"), error);
    break;
  default:
    tree.file(name, "no photograph");
    break;
  }
}

Holdings rested(int threadsBefore) {
  threadsAfterRest(threadsBefore);
  malloc_trim(0);
  return Holdings::now();
}

void print(const char *when, long searches, const Holdings &held) {
  std::printf("%s: %ld searches, %ld KiB resident, %ld KiB allocated, %d descriptors, %d threads\n",
              when, searches, held.resident, held.allocated, held.descriptors, held.threads);
  std::fflush(stdout);
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  const int seconds = argc > 1 ? std::atoi(argv[1]) : 1800;
  const VirtualClock clock;
  TemporaryTree tree;
  const TemporaryTree cache;
  IndexPlace::setCacheFolderForTesting(cache.path());
  makeSmallTree(tree);
  addDeepFiles(tree);
  adoptDescendants();
  const int threadsBefore = threadsAtRest();
  std::mt19937 random(1);
  const Clock::time_point begin = Clock::now();
  // The first minute of a long run, a third of a short one.
  const Clock::time_point first = begin + std::chrono::seconds(std::min(60, seconds / 3));
  const Clock::time_point end = begin + std::chrono::seconds(seconds);
  Holdings early;
  long searches = 0;
  bool hasEarly = false;
  while (Clock::now() < end) {
    for (int i = 0; i < 20; ++i)
      change(tree, random);
    const Way &way = allWays()[random() % allWays().size()];
    doing = std::string(way.name) + " at search " + std::to_string(searches);
    useIndex(way.usesIndex);
    searchDeep(way.isDeep);
    const std::unique_ptr<Record> record = makeRecord(way, tree.path(), Host::take);
    Paths found = Host::search(*record);
    Paths unread = Host::unread();
    for (Paths *const paths : {&found, &unread})
      std::erase_if(
          *paths, [&](const std::string &path) { return path.starts_with(tree.path("changing")); });
    check(relative(found, tree.path()) == way.found, "finds " + relative(found, tree.path()));
    check(relative(unread, tree.path()) == way.unread,
          "cannot read " + relative(unread, tree.path()));
    check(areDescendantsGone(), "processes left behind");
    ++searches;
    if (!hasEarly && Clock::now() >= first) {
      hasEarly = true;
      early = rested(threadsBefore);
      print("early", searches, early);
    }
  }
  const Holdings late = rested(threadsBefore);
  print("at the end", searches, late);
  doing = "at the end";
  check(late.descriptors == early.descriptors, "descriptors left open");
  check(late.threads <= threadsBefore, "threads left behind");
  // Memory that an allocator keeps for later is no growth.
  check(late.allocated <= early.allocated + 256, "memory has grown");
  check(late.resident <= early.resident + 4096, "resident memory has grown");
  return verdict(std::to_string(searches) + " searches");
}
