#include "tests/search/SearchFixture.h"
#include "tests/support/SystemCallsGuard.h"

#include <cerrno>
#include <climits>
#include <condition_variable>
#include <filesystem>
#include <mutex>

namespace {

const SystemCalls &real = realSystemCalls();

class WalkTest : public SearchFixture {};

TEST_F(WalkTest, Conditions) {
  constexpr struct {
    const char *words;
    const char *all;
    const char *any;
  } rows[] = {
      {"n=beach", "1beach.jpg 2Beach.tif in/3beach.pdf !", "1beach.jpg 2Beach.tif in/3beach.pdf !"},
      {"n=beach f", "1beach.jpg 2Beach.tif !", "1beach.jpg 2Beach.tif !"},
      {"n=Beach d", "2Beach.tif !", "2Beach.tif !"},
      {"n=\xff", "4\xff.pct !", "4\xff.pct !"},
      {"n=in", "!", "!"},
      {"n=", "1beach.jpg 2Beach.tif 4\xff.pct in/3beach.pdf !", "!"},
      {"s=3", "4\xff.pct in/3beach.pdf !", "4\xff.pct in/3beach.pdf !"},
      {"e=2", "1beach.jpg 2Beach.tif !", "1beach.jpg 2Beach.tif !"},
      {"s=2.000001 e=3", "in/3beach.pdf !", "in/3beach.pdf !"},
      {"n=BEACH s=3 e=4", "in/3beach.pdf !", "1beach.jpg 2Beach.tif 4\xff.pct in/3beach.pdf !"},
      {"n= e=1", "1beach.jpg !", "1beach.jpg !"},
      {"n=1 c=k x p S=0", "!", "1beach.jpg !"},
      {"c= x", "1beach.jpg 2Beach.tif !", "!"},
  };
  for (const char *const name : {"1beach.jpg", "2Beach.tif", "in/3beach.pdf", "4\xff.pct"}) {
    tree.file(name);
    const int seconds = name[name[0] == 'i' ? 3 : 0] - '0';
    tree.setModified(name, NSDate::secondsFrom1970To2001 + seconds, 999);
  }
  for (const char *const name : {"beach.txt", ".beach/1.jpg", "in/.hidden/1.jpg", "beach.app/1.jpg",
                                 "a.doc/Contents/Info.plist", "a.doc/1.jpg"})
    tree.file(name);
  for (const char *const target : {".", "../.beach", "itself"})
    tree.link(std::string("in/to ") + target[0] + target[1], target);
  for (const auto &row : rows) {
    SCOPED_TRACE(row.words);
    Request request = makeRequest(row.words);
    EXPECT_EQ(searchSorted(request), row.all);
    request.isAndSearch = 0;
    EXPECT_EQ(searchSorted(request), row.any);
  }
}

TEST_F(WalkTest, AFolderIsReportedInTheOrderOfItsListing) {
  for (int i = 0; i < 300; ++i)
    tree.file(std::string(150, 'a') + std::to_string(i) + ".jpg");
  Words expected;
  for (const auto &entry : std::filesystem::directory_iterator(tree.path()))
    expected.push_back(entry.path().filename());
  Request request = makeRequest("n=");
  EXPECT_EQ(search(request), join(expected) + " !");
}

TEST_F(WalkTest, TheStartFolderIsTakenAsItIs) {
  tree.file("in/a.jpg");
  tree.link("link.app", "in");
  tree.file(".hidden.app/b.jpg");
  static std::string rootFolder;
  rootFolder = tree.path("in");
  SystemCalls calls = real;
  calls.openAt = [](int at, const char *path, int flags) {
    const bool isRoot = std::string_view("//.").ends_with(path);
    return real.openAt(at, isRoot ? rootFolder.c_str() : path, flags);
  };
  const SystemCallsGuard guard(calls);
  const std::string relative = std::filesystem::relative(tree.path("in"));
  const std::string rows[][2] = {
      {tree.path("in"), "in/a.jpg !"},
      {tree.path("in/"), "in/a.jpg !"},
      {tree.path("link.app"), "link.app/a.jpg !"},
      {tree.path(".hidden.app"), ".hidden.app/b.jpg !"},
      {tree.path("missing"), "!"},
      {tree.path("in/a.jpg"), "!"},
      {relative, relative + "/a.jpg !"},
      {"/", "/a.jpg !"},
      {"", "!"},
  };
  for (const auto &[folder, expected] : rows) {
    Request request(folder, "n= f");
    request.resultCallback = report;
    EXPECT_EQ(search(request), expected) << folder;
  }
  Request request = makeRequest("n=");
  request.searchFolder = nullptr;
  EXPECT_EQ(search(request), "!");
  EXPECT_NEAR(hosts[0].endTime, 1.5, timeTolerance);
}

TEST_F(WalkTest, PathsTooLongForTheSystem) {
  std::size_t nameable = 0;
  const auto add = [&](const std::string &name) {
    nameable += tree.file(name).size() < PATH_MAX ? 1 : 0;
  };
  for (std::string folder; folder.size() < PATH_MAX + 500; folder += std::string(200, 'd') + "/") {
    add(folder + "a.jpg");
    const std::size_t left = PATH_MAX - 1 - tree.path(folder).size();
    if (left > 10 && left < 220)
      for (const std::size_t size : {left, left + 1})
        add(folder + std::string(size - 4, 'x') + ".jpg");
  }
  Request request = makeRequest("n=");
  search(request);
  EXPECT_EQ(hosts[0].words.size(), nameable + 1);
}

/// Holds workers in their folders until five are there.
struct Gate {
  std::mutex lock;
  std::condition_variable changed;
  int inside = 0;
  int most = 0;
  bool isMainThreadUsed = false;
} gate;

TEST_F(WalkTest, FiveWorkersOnAFolderEach) {
  for (int i = 0; i < 12; ++i)
    tree.file("folder " + std::to_string(i) + "/a.jpg");
  SystemCalls calls = real;
  calls.openAt = [](int at, const char *path, int flags) {
    std::unique_lock guard(gate.lock);
    gate.most = std::max(gate.most, ++gate.inside);
    gate.changed.notify_all();
    const bool isBelow = std::string_view(path).find("folder ") != std::string_view::npos;
    gate.changed.wait_for(guard, std::chrono::seconds(30),
                          [&] { return !isBelow || gate.most > 4; });
    return real.openAt(at, path, flags);
  };
  calls.listEntries = [](int folder, void *buffer, std::size_t size) {
    const ssize_t filled = real.listEntries(folder, buffer, size);
    const std::lock_guard guard(gate.lock);
    gate.isMainThreadUsed |= MainRunLoop::shared().isMainThread();
    gate.inside -= filled == 0 ? 1 : 0;
    return filled;
  };
  const SystemCallsGuard guard(calls);
  gate.most = 0;
  Request request = makeRequest("n=");
  search(request);
  EXPECT_EQ(hosts[0].words.size(), 13U);
  EXPECT_EQ(gate.most, 5);
  EXPECT_EQ(gate.inside, 0);
  EXPECT_FALSE(gate.isMainThreadUsed);
}

TEST_F(WalkTest, OneWorkerAtMostForAnEvent) {
  constexpr struct {
    const char *name;
    bool isCancelled;
    bool hasList;
    int running;
    const char *folder;
    int runningAfter;
    std::size_t queuedAfter;
  } rows[] = {
      {"folder", false, false, 1, "/4", 2, 3},
      {"folder, five running", false, false, 5, "/4", 5, 4},
      {"end of a worker", false, false, 5, nullptr, 5, 2},
      {"folder, cancelled", true, false, 4, "/4", 4, 4},
      {"end of a worker, cancelled", true, false, 5, nullptr, 4, 3},
      {"list", false, true, 0, nullptr, 1, 3},
      {"list, cancelled", true, true, 0, "/4", 1, 3},
      {"folder of a list", false, true, 1, "/4", 2, 3},
      {"folder of a list, cancelled", true, true, 1, "/4", 1, 4},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    reset();
    Request request = makeRequest("n=");
    if (row.hasList)
      request.setList({});
    SearchEngineProbe probe;
    probe.begin(request);
    for (const char *const folder : {"/1", "/2", "/3"})
      probe.folders.push_back(NSString::create(folder));
    probe.threadCount = row.running;
    probe.isCancelled = row.isCancelled;
    probe.engine.manualSearchPool(row.folder ? NSString::create(row.folder).get() : nullptr);
    EXPECT_EQ(probe.threadCount, row.runningAfter);
    EXPECT_EQ(probe.folders.size(), row.queuedAfter);
    EXPECT_FALSE(probe.walkEnd.isScheduled());
    probe.isCancelled = 1;
    const bool hasStarted = row.runningAfter > row.running - (row.folder ? 0 : 1);
    while (hasStarted && probe.threadCount == row.runningAfter)
      ASSERT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 30, 1), kCFRunLoopRunHandledSource);
  }
}

TEST_F(WalkTest, ListOfFiles) {
  for (const char *const name : {"one.b.jpg", "one.a.pdf", "one/two.jpg", "one.txt"})
    tree.file(name);
  const std::string a = tree.path("one.a.pdf");
  const std::string b = tree.path("one.b.jpg");
  const std::string relative = std::filesystem::relative(a);
  const std::pair<Words, std::string> rows[] = {
      {{b, a}, "one.b.jpg one.a.pdf !"},
      {{a, a}, "one.a.pdf one.a.pdf !"},
      {{tree.path("one/two.jpg"), b, tree.path("one.txt")}, "one.b.jpg !"},
      {{tree.path("one.jpg"), b, a + "/one.jpg", ""}, "one.b.jpg !"},
      {{relative}, relative + " !"},
      {{}, "!"},
      {{tree.path("one"), b, tree.path("one/")}, "one.b.jpg !"},
      {{std::string(PATH_MAX, '/') + b, a}, "one.a.pdf !"},
  };
  for (const auto &[paths, expected] : rows) {
    Request request = makeRequest("n=one f");
    request.setList(paths);
    EXPECT_EQ(search(request), expected);
    EXPECT_NEAR(hosts[0].endTime, 1.5, timeTolerance);
  }

  // With sub-folders a folder in the list has the list searched again and again.
  reset();
  Request endless = makeRequest("n=one");
  endless.setList({a, tree.path("one")});
  hosts[0].onResult = [this] {
    if (hosts[0].words.size() == 50)
      SS_SearchCancel();
  };
  SS_SearchStart(&endless);
  finish();
  EXPECT_GE(std::count(hosts[0].words.begin(), hosts[0].words.end(), "one.a.pdf"), 50);
  EXPECT_LE(hosts[0].words.size(), 55U);
  EXPECT_GT(hosts[0].endTime, 0);
}

/// What fails: opening, and asking for the status of, paths with such a part; listing.
struct Fault {
  const char *name;
  const char *opened;
  const char *asked;
  enum { Works, BreaksOff, Fails } listing;
  int error;
  const char *found;
  const char *words = "n=";
};
const Fault *fault;

bool isFaulty(const char *part, std::string_view path) {
  errno = fault->error;
  return part != nullptr && path.find(part) != path.npos;
}

TEST_F(WalkTest, WhatCannotBeRead) {
  constexpr const char *all = "a.jpg bad/c.jpg bad/in/d.jpg good/b.jpg !";
  constexpr Fault rows[] = {
      {"unreadable", "bad", nullptr, Fault::Works, EACCES, "a.jpg good/b.jpg !"},
      {"gone from the queue", "bad", nullptr, Fault::Works, ENOENT, "a.jpg good/b.jpg !"},
      {"not to be entered", "bad/.", ".", Fault::Works, EACCES, "a.jpg bad/in/d.jpg good/b.jpg !"},
      {"folder without status", nullptr, "bad", Fault::Works, EACCES, "a.jpg good/b.jpg !"},
      {"all gone since they were listed", nullptr, "", Fault::Works, ENOENT, "a.jpg !"},
      {"files without dates", nullptr, ".jpg", Fault::Works, ENOENT, all, "e=-9e9"},
      {"listings that break off", nullptr, nullptr, Fault::BreaksOff, EIO, all},
      {"no listings", nullptr, nullptr, Fault::Fails, EIO, "!"},
  };
  for (const char *const name : {"a.jpg", "good/b.jpg", "bad/c.jpg", "bad/in/d.jpg"})
    tree.file(name);
  SystemCalls calls = real;
  calls.openAt = [](int at, const char *path, int flags) {
    return isFaulty(fault->opened, path) ? -1 : real.openAt(at, path, flags);
  };
  calls.listEntries = [](int folder, void *buffer, std::size_t size) {
    const ssize_t filled = real.listEntries(folder, buffer, size);
    errno = fault->error;
    return fault->listing == (filled == 0 ? Fault::BreaksOff : Fault::Fails) ? -1 : filled;
  };
  calls.statusAt = [](int at, const char *path, int flags, struct statx *status) {
    return isFaulty(fault->asked, path) ? -1 : real.statusAt(at, path, flags, status);
  };
  const SystemCallsGuard guard(calls);
  for (const Fault &row : rows) {
    SCOPED_TRACE(row.name);
    fault = &row;
    Request request = makeRequest(row.words);
    EXPECT_EQ(searchSorted(request), row.found);
    EXPECT_NEAR(hosts[0].endTime, 1.5, timeTolerance);
  }
}

TEST_F(WalkTest, AsksTheSystemForNoMoreThanItNeeds) {
  for (const char *const name : {"a.jpg", "b.txt", "c.pdf", "one/d.jpg", "one/e", "two/f.jpg",
                                 "two/.g.jpg", ".hidden/h.jpg"})
    tree.file(name);
  tree.link("link", "one");
  tree.link("link.jpg", "a.jpg");
  constexpr int folders = 3;
  constexpr int subFoldersAndLinks = 3;
  constexpr int candidates = 5;
  const SystemCallsGuard calls;
  for (const bool hasDate : {false, true}) {
    calls.resetCounts();
    Request request = makeRequest(hasDate ? "s=0" : "n=");
    EXPECT_EQ(searchSorted(request), "a.jpg c.pdf link.jpg one/d.jpg two/f.jpg !");
    EXPECT_EQ(calls.counts().openAt, folders);
    EXPECT_EQ(calls.counts().listEntries, 2 * folders);
    EXPECT_EQ(calls.counts().statusAt, subFoldersAndLinks + (hasDate ? candidates : 0));
    EXPECT_EQ(calls.counts().read, 0);
  }
}

} // namespace
