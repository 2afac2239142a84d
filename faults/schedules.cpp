// Random orders of what a host may do: starts, second starts, cancels, changes of the index's use,
// from inside callbacks, before the loop runs and while workers wait; slow callbacks, callbacks
// that run the loop; hosts that exit in mid-search; reader processes that are killed at any time.
//
//     schedules [--searches COUNT] [--seconds MOST] [--seed FIRST]
//
// Each search has its own seed. A fault is printed with the seed that reproduces it, as far as
// threads allow.

#include "faults/Process.h"
#include "faults/ReaderKiller.h"
#include "faults/Searches.h"
#include "faults/Verdict.h"
#include "platform/content/Content.h"
#include "platform/content/ReaderConnection.h"
#include "platform/foundation/MainLoop.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/MetadataIndex.h"
#include "testing/VirtualClock.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <optional>
#include <poll.h>
#include <random>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace searchsystem {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t records = 4;

/// A host that acts at random, and checks what the library owes it.
class RandomHost {
public:
  RandomHost(const std::string &tree, std::uint64_t seed)
      : tree_(tree), seed_(seed), random_(static_cast<std::mt19937::result_type>(seed)) {
    current = this;
    for (std::size_t i = 0; i < records; ++i)
      ways_[i] = &allWays()[chance(static_cast<unsigned>(allWays().size()))];
    make<0, 1, 2, 3>();
    // Now and then calm, so that all of a search is seen too.
    unrest_ = chance(3) * 4;
  }
  ~RandomHost() { current = nullptr; }
  RandomHost(const RandomHost &) = delete;
  RandomHost &operator=(const RandomHost &) = delete;

  /// Drives a few searches to their ends; how many ends there were.
  int run() {
    doing = "seed " + std::to_string(seed_);
    mustGoOnWithin(120);
    setIndexAllowed(chance(2) != 0);
    startsLeft_ = 1 + static_cast<int>(chance(3));
    std::optional<ReaderKiller> killer;
    if (chance(4) == 0)
      killer.emplace(seed_);
    readersDie_ = killer.has_value();
    if (chance(8) == 0)
      cancel();
    start();
    while (isRunning_ || startsLeft_ > 0) {
      if (!isRunning_)
        start();
      actFromOutside();
      step();
    }
    killer.reset();
    Host::settle();
    check(!isRunning_, "the end is owed");
    check(areDescendantsGone(), "processes left behind");
    // A reader that could not be started is not tried again for a while.
    if (readersDie_)
      ReaderConnection::shared().useForTesting({}, {});
    return ends_;
  }

  /// Starts a search and is gone in the middle of it. Does not return.
  [[noreturn]] void runAndExit() {
    setIndexAllowed(chance(2) != 0);
    startsLeft_ = 1;
    unrest_ = 0;
    start();
    // It may end before, but this host does not know the expected results.
    isWhole_ = false;
    for (unsigned i = chance(12); i > 0; --i)
      PFMainLoopDispatch();
    if (chance(2) != 0)
      std::this_thread::sleep_for(std::chrono::microseconds(chance(2000)));
    if (chance(2) != 0)
      std::exit(0);
    std::quick_exit(0);
  }

private:
  unsigned chance(unsigned sides) { return static_cast<unsigned>(random_() % sides); }

  template <std::size_t... number> void make() {
    (..., (records_[number] = makeRecord(*ways_[number], tree_, told<number>)));
  }

  template <std::size_t number> static void told(CFStringRef path, std::int32_t state) {
    check(current != nullptr, "a report without a search");
    if (current == nullptr)
      return;
    if (state == 0)
      current->toldEnd(number);
    else
      current->toldResult(number, path);
  }

  void toldResult(std::size_t number, CFStringRef path) {
    check(isRunning_, "a result when no search runs");
    check(number == searched_, "a result for another record");
    check(!isInResult_, "a result inside another");
    found_.emplace_back(CFStringGetCStringPtr(path, kCFStringEncodingUTF8));
    isInResult_ = true;
    if (chance(20) == 0)
      std::this_thread::sleep_for(std::chrono::microseconds(chance(3000)));
    act();
    // Once at a time: a callback that always ran the loop would never come back.
    if (unrest_ > 0 && chance(10) == 0)
      PFMainLoopDispatch();
    if (unrest_ > 0 && chance(20) == 0)
      CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.001, 1);
    isInResult_ = false;
  }

public:
  static void toldUnread(CFStringRef path, std::int32_t reason, void * /*context*/) {
    check(current != nullptr, "an unread file without a search");
    if (current != nullptr)
      current->toldUnread(CFStringGetCStringPtr(path, kCFStringEncodingUTF8), reason);
  }

private:
  void toldUnread(const std::string &path, std::int32_t reason) {
    check(isRunning_, "an unread file when no search runs");
    check(!isInResult_, "an unread file inside a result");
    check(ways_[searched_]->isDeep, "an unread file of a plain search");
    const bool isLost = reason == PFContentReaderCrashed || reason == PFContentNoReader;
    const bool isDamaged =
        path == tree_ + "/in/9broken.pdf" || path == tree_ + "/shelf.doc/7beach.jpg";
    check((reason == PFContentDamaged && isDamaged) || (readersDie_ && isLost),
          path + " is unread for the reason " + std::to_string(reason));
    check(std::find(unread_.begin(), unread_.end(), path) == unread_.end(),
          path + " is told to be unread twice");
    unread_.push_back(path);
    lostReaders += isLost ? 1 : 0;
    act();
  }

  void toldEnd(std::size_t number) {
    check(isRunning_, "an end when no search runs");
    check(!isInResult_, "an end inside a result");
    check(number == latest_, "the end for another record");
    isRunning_ = false;
    hasEngine_ = false;
    ++ends_;
    judgeResults();
    if (startsLeft_ > 0 && chance(2) != 0)
      start();
    act();
  }

  void judgeResults() {
    if (!isWhole_)
      return;
    // What could not be read may not be missed without a word.
    Paths known = found_;
    for (const std::string &path : unread_)
      if (std::find(expected_.begin(), expected_.end(), path) != expected_.end())
        known.push_back(path);
    std::sort(known.begin(), known.end());
    check(known == expected_, std::string(ways_[searched_]->name) + ": found " +
                                  relative(known, tree_) + ", not " + relative(expected_, tree_));
  }

  void setIndexAllowed(bool isAllowed) {
    isIndexAllowed_ = isAllowed;
    useIndex(isAllowed);
  }

  void makeEngine() {
    if (!hasEngine_)
      engineHasQuery_ = isIndexAllowed_;
    hasEngine_ = true;
  }

  void start() {
    --startsLeft_;
    latest_ = chance(records);
    const bool isFirst = !isRunning_;
    makeEngine();
    if (isFirst) {
      isRunning_ = true;
      searched_ = latest_;
      found_.clear();
      unread_.clear();
      const Way &way = *ways_[searched_];
      const bool wantsIndex = isIndexAllowed_ && !way.isList;
      expected_ = expectedResults(way, wantsIndex);
      isWhole_ = !wantsIndex || engineHasQuery_;
    } else {
      isWhole_ = false;
    }
    PFContentSetDepth(ways_[latest_]->isDeep ? PFContentDeep : PFContentPlain);
    SS_SearchStart(&records_[latest_]->predicate);
  }

  /// What the way finds by the walk or by the index: they differ in kinds and dates.
  static Paths expectedResults(const Way &way, bool byIndex) {
    for (const auto &[known, isByIndex, found] : answers)
      if (known == &way && isByIndex == byIndex)
        return found;
    return {};
  }

  void cancel() {
    makeEngine();
    if (isRunning_)
      isWhole_ = false;
    SS_SearchCancel();
  }

  /// One of the things that a host may do at any time.
  void act() {
    if (unrest_ == 0 || chance(40) >= unrest_)
      return;
    switch (chance(5)) {
    case 0:
      cancel();
      break;
    case 1:
      if (startsLeft_ > 0)
        start();
      break;
    case 2:
      setIndexAllowed(chance(2) != 0);
      break;
    case 3:
      // In force from the next start on.
      PFContentSetDepth(static_cast<int>(chance(2)));
      break;
    default:
      PFMetadataIndexClear();
      break;
    }
  }

  void actFromOutside() {
    act();
    if (unrest_ > 0 && chance(30) == 0)
      std::this_thread::sleep_for(std::chrono::microseconds(chance(2000)));
  }

  /// Lets the loop run a little, in one of the ways that a host can.
  void step() {
    switch (chance(3)) {
    case 0:
      CFRunLoopRunInMode(kCFRunLoopDefaultMode, 5, 1);
      break;
    case 1:
      PFMainLoopDispatch();
      break;
    default: {
      pollfd descriptor{PFMainLoopGetDescriptor(), POLLIN, 0};
      poll(&descriptor, 1, 5000);
      PFMainLoopDispatch();
      break;
    }
    }
  }

public:
  struct Answer {
    const Way *way;
    bool byIndex;
    Paths found;
  };
  static inline std::vector<Answer> answers;
  /// How many documents were unread because their reader was killed.
  static inline int lostReaders = 0;

private:
  static inline RandomHost *current = nullptr;

  const std::string tree_;
  const std::uint64_t seed_;
  std::mt19937 random_;
  std::array<const Way *, records> ways_{};
  std::array<std::unique_ptr<Record>, records> records_;
  unsigned unrest_ = 0;
  int startsLeft_ = 0;

  bool isIndexAllowed_ = false;
  /// An engine may outlive its host: a cancel makes one, and only a search's end takes it away.
  static inline bool hasEngine_ = false, engineHasQuery_ = false;
  bool isRunning_ = false, isInResult_ = false;
  /// Nothing has disturbed the search, so it must find everything.
  bool isWhole_ = false;
  /// Reader processes may be killed.
  bool readersDie_ = false;
  std::size_t searched_ = 0, latest_ = 0;
  int ends_ = 0;
  Paths found_, unread_, expected_;
};

/// What each way finds when nothing disturbs it.
void learnAnswers(const std::string &tree) {
  for (const Way &way : allWays())
    for (const bool byIndex : {false, true}) {
      useIndex(byIndex);
      searchDeep(way.isDeep);
      doing = way.name;
      const std::unique_ptr<Record> record = makeRecord(way, tree, Host::take);
      RandomHost::answers.push_back({&way, byIndex, Host::search(*record)});
      const Paths &found = RandomHost::answers.back().found;
      check(!way.isDeep || relative(found, tree) == way.found, "found " + relative(found, tree));
    }
  PFContentSetUnreadCallback(RandomHost::toldUnread, nullptr);
}

/// Runs this program as a host that exits in mid-search; returns what was wrong with its end.
void runExitingHost(const char *program, const std::string &tree, const std::string &cache,
                    std::uint64_t seed) {
  doing = "a host that exits, seed " + std::to_string(seed);
  std::string number = std::to_string(seed);
  std::string exiting = "--exit", folder = tree, cacheFolder = cache, name = program;
  std::array<char *, 6> arguments{name.data(),   exiting.data(),     number.data(),
                                  folder.data(), cacheFolder.data(), nullptr};
  pid_t child = 0;
  if (!check(posix_spawn(&child, program, nullptr, nullptr, arguments.data(), environ) == 0,
             "cannot be started"))
    return;
  int status = 0;
  waitpid(child, &status, 0);
  check(WIFEXITED(status) && WEXITSTATUS(status) == 0,
        "ends with status " + std::to_string(status));
  check(areDescendantsGone(), "processes left behind");
}

std::uint64_t numberOf(const char *text) { return std::strtoull(text, nullptr, 10); }

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  if (argc == 5 && std::strcmp(argv[1], "--exit") == 0) {
    const VirtualClock clock;
    IndexPlace::setCacheFolderForTesting(argv[4]);
    mustGoOnWithin(60);
    PFContentSetUnreadCallback(RandomHost::toldUnread, nullptr);
    RandomHost(argv[3], numberOf(argv[2])).runAndExit();
  }
  std::uint64_t searches = 2000, seed = 1, seconds = 60;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    (option == "--searches" ? searches
     : option == "--seed"   ? seed
                            : seconds) = numberOf(argv[i + 1]);
  }
  const VirtualClock clock;
  TemporaryTree tree;
  const TemporaryTree cache;
  makeSmallTree(tree);
  addDeepFiles(tree);
  IndexPlace::setCacheFolderForTesting(cache.path());
  adoptDescendants();
  const int threadsBefore = threadsAtRest();
  learnAnswers(tree.path());
  static_cast<void>(PFMainLoopGetDescriptor());
  const int descriptors = Holdings::now().descriptors;

  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  std::uint64_t ends = 0, exits = 0;
  for (; ends < searches && Clock::now() < end; ++seed) {
    if (seed % 100 == 0) {
      runExitingHost(argv[0], tree.path(), cache.path(), seed);
      ++exits;
    }
    RandomHost host(tree.path(), seed);
    ends += static_cast<std::uint64_t>(host.run());
    check(Holdings::now().descriptors == descriptors, "descriptors left open");
  }
  doing = "at the end";
  const int left = threadsAfterRest(threadsBefore) - threadsBefore;
  check(left <= 0, std::to_string(left) + " threads left behind");
  return verdict(std::to_string(ends) + " searches, " + std::to_string(exits) +
                 " hosts that exited, " + std::to_string(RandomHost::lostReaders) +
                 " documents whose reader was killed");
}
