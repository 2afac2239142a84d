#include "testing/SystemCallsGuard.h"
#include "tests/search/SearchFixture.h"

#include <cerrno>
#include <condition_variable>
#include <mutex>

namespace searchsystem {

namespace {

const SystemCalls &real = realSystemCalls();

using WalkTest = SearchFixture;

TEST_F(WalkTest, Conditions) {
  for (const char *const name : {"1beach.jpg", "2Beach.tif", "in/3beach.pdf", "4\xff.pct"}) {
    tree.file(name);
    const int seconds = name[name[0] == 'i' ? 3 : 0] - '0';
    tree.setModified(name, NSDate::secondsFrom1970To2001 + seconds, 999);
  }
  makeFiles({"beach.txt", ".beach/1.jpg", "in/.hidden/1.jpg", "beach.app/1.jpg",
             "a.doc/Contents/Info.plist", "a.doc/1.jpg"});
  for (const char *const target : {".", "../.beach", "itself"})
    tree.link(std::string("in/to ") + target[0] + target[1], target);
  expectFound({
      {"n=beach", "1beach.jpg 2Beach.tif in/3beach.pdf", "1beach.jpg 2Beach.tif in/3beach.pdf"},
      {"n=Beach d", "2Beach.tif", "2Beach.tif"},
      {"n=\xff", "4\xff.pct", "4\xff.pct"},
      {"n=", "1beach.jpg 2Beach.tif 4\xff.pct in/3beach.pdf", ""},
      {"s=3", "4\xff.pct in/3beach.pdf", "4\xff.pct in/3beach.pdf"},
      {"s=2.000001 e=3", "in/3beach.pdf", "in/3beach.pdf"},
      {"n= e=1", "1beach.jpg", "1beach.jpg"},
  });
}

/// Holds workers in their folders until five are there.
struct Gate {
  std::mutex lock;
  std::condition_variable changed;
  int inside = 0, most = 0;
  bool isMainThreadUsed = false;
} gate;

TEST_F(WalkTest, FiveWorkersOnAFolderEach) {
  for (int i = 0; i < 12; ++i)
    tree.file("folder " + std::to_string(i) + "/a.jpg");
  const auto open = [](int at, const char *path, int flags) {
    std::unique_lock guard(gate.lock);
    gate.most = std::max(gate.most, ++gate.inside);
    gate.changed.notify_all();
    const bool isBelow = std::string_view(path).find("folder ") != std::string_view::npos;
    gate.changed.wait_for(guard, std::chrono::seconds(30),
                          [&] { return !isBelow || gate.most > 4; });
    return real.openAt(at, path, flags);
  };
  const auto list = [](auto... arguments) {
    const ssize_t filled = real.listEntries(arguments...);
    const std::lock_guard guard(gate.lock);
    gate.isMainThreadUsed |= MainRunLoop::shared().isMainThread();
    gate.inside -= filled == 0 ? 1 : 0;
    return filled;
  };
  const SystemCallsGuard guard({.openAt = open, .listEntries = list});
  gate.most = 0;
  search("n=");
  EXPECT_EQ(hosts[0].words.size(), 13U);
  EXPECT_EQ(gate.most, 5);
  EXPECT_EQ(gate.inside, 0);
  EXPECT_FALSE(gate.isMainThreadUsed);
}

TEST_F(WalkTest, ManyFoldersAndLargeOnes) {
  Words all;
  for (int i = 0; i < 1400; ++i)
    all.push_back((i < 300 ? "few/" + std::to_string(i) : "many") + "/" + std::to_string(i) +
                  ".jpg");
  std::sort(all.begin(), all.end());
  for (const std::string &name : all)
    tree.file(name);
  for (int i = 0; i < 300; ++i)
    tree.folder("empty/" + std::to_string(i));
  const SystemCallsGuard calls;
  EXPECT_EQ(found("n="), join(all));
  EXPECT_EQ(calls.counts().openAt, 1 + 3 + 300 + 300) << "one listing per folder";

  reset();
  Request cancelled = makeRequest("n=");
  hosts[0].onResult = [] { SS_SearchCancel(); };
  SS_SearchStart(&cancelled);
  finish();
  EXPECT_LE(hosts[0].words.size(), 5U + 1) << "what five workers had on the way, and the end";
}

TEST_F(WalkTest, ListOfFiles) {
  makeFiles({"one.b.jpg", "one.a.pdf", "one/two.jpg", "one.txt"});
  const std::string a = tree.path("one.a.pdf"), b = tree.path("one.b.jpg");
  const std::pair<Words, std::string> rows[] = {
      {{b, a}, "one.b.jpg one.a.pdf !"},
      {{tree.path("one/two.jpg"), b, tree.path("one.txt")}, "one.b.jpg !"},
      {{tree.path("one.jpg"), b, a + "/one.jpg", ""}, "one.b.jpg !"},
      {{}, "!"},
      {{tree.path("one"), b, tree.path("one/")}, "one.b.jpg !"}};
  for (const auto &[paths, expected] : rows) {
    Request request = makeRequest("n=one f");
    request.setList(paths);
    EXPECT_EQ(search(request), expected);
    EXPECT_TRUE(isAt(hosts[0].endTime, 1.5));
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
  const char *name, *opened, *asked;
  enum { Works, BreaksOff, Fails } listing;
  int error;
  const char *found, *words = "n=";
};
const Fault *fault;
/// What paths begin with that are not faulty by themselves.
std::string root;

bool isFaulty(const char *part, std::string_view path) {
  path.remove_prefix(path.starts_with(root) ? root.size() : 0);
  errno = fault->error;
  return part != nullptr && path.find(part) != path.npos;
}

TEST_F(WalkTest, WhatCannotBeRead) {
  constexpr const char *all = "a.jpg bad/c.jpg bad/in/d.jpg good/b.jpg";
  constexpr Fault rows[] = {
      {"unreadable", "bad", nullptr, Fault::Works, EACCES, "a.jpg good/b.jpg"},
      {"not to be entered", "bad/.", ".", Fault::Works, EACCES, "a.jpg bad/in/d.jpg good/b.jpg"},
      {"gone since they were listed", "d/.", "d", Fault::Works, ENOENT, "a.jpg"},
      {"files without dates", nullptr, ".jpg", Fault::Works, ENOENT, all, "e=-9e9"},
      {"listings that break off", nullptr, nullptr, Fault::BreaksOff, EIO, all},
      {"no listings", nullptr, nullptr, Fault::Fails, EIO, ""}};
  makeFiles({"a.jpg", "good/b.jpg", "bad/c.jpg", "bad/in/d.jpg"});
  root = tree.path();
  const auto open = [](int at, const char *path, auto... others) {
    return isFaulty(fault->opened, path) ? -1 : real.openAt(at, path, others...);
  };
  const auto list = [](auto... arguments) {
    const ssize_t filled = real.listEntries(arguments...);
    errno = fault->error;
    return fault->listing == (filled == 0 ? Fault::BreaksOff : Fault::Fails) ? -1 : filled;
  };
  const auto status = [](int at, const char *path, auto... others) {
    return isFaulty(fault->asked, path) ? -1 : real.statusAt(at, path, others...);
  };
  const SystemCallsGuard guard({.openAt = open, .listEntries = list, .statusAt = status});
  for (const Fault &row : rows) {
    SCOPED_TRACE(row.name);
    fault = &row;
    EXPECT_EQ(found(row.words), row.found);
    EXPECT_TRUE(isAt(hosts[0].endTime, 1.5));
  }
}

TEST_F(WalkTest, AStartFolderThatIsNone) {
  for (const char *const folder : {"missing", "a.jpg", ""}) {
    Request request = makeRequest("n=", folder);
    tree.file("a.jpg");
    if (*folder == '\0')
      request.searchFolder = nullptr;
    EXPECT_EQ(search(request), "!") << folder;
    EXPECT_TRUE(isAt(hosts[0].endTime, 1.5)) << folder;
  }
}

TEST_F(WalkTest, AsksTheSystemForNoMoreThanItNeeds) {
  makeFiles({"a.jpg", "b.txt", "c.pdf", "one/d.jpg", "one/e", "two/f.jpg", "two/.g.jpg",
             ".hidden/h.jpg"});
  tree.link("link", "one");
  tree.link("link.jpg", "a.jpg");
  constexpr int folders = 3, subFolders = 2, links = 1, candidates = 5;
  for (const auto &[hasDate, areMountsTold] :
       {std::pair(false, false), {true, false}, {false, true}, {true, true}}) {
    const SystemCallsGuard calls(
        {.openMountTable = areMountsTold ? nullptr : +[](int) { return -1; }});
    EXPECT_EQ(found(hasDate ? "s=0" : "n="), "a.jpg c.pdf link.jpg one/d.jpg two/f.jpg");
    EXPECT_EQ(calls.counts().openAt, folders);
    EXPECT_EQ(calls.counts().listEntries, 2 * folders);
    EXPECT_EQ(calls.counts().statusAt,
              links + (areMountsTold ? 0 : subFolders) + (hasDate ? candidates : 0));
    EXPECT_TRUE(areMountsTold || calls.counts().read == 0);
  }
}

} // namespace

} // namespace searchsystem
