#include "tests/metadata/QueryFixture.h"

#include <atomic>
#include <chrono>

namespace searchsystem {

namespace {

using Clock = std::chrono::steady_clock;

class QueryTest : public QueryFixture {
protected:
  void makePhotos(int count, int folders = 20) {
    for (int i = 0; i < count; ++i)
      tree.file("folder " + std::to_string(i % folders) + "/" + std::to_string(i) + ".jpg");
  }

  static void keepBusy(std::chrono::milliseconds time) {
    const auto end = Clock::now() + time;
    while (Clock::now() < end) {
    }
  }
};

TEST_F(QueryTest, FindsWhatAWalkMeets) {
  makeFiles({"1.jpg", "in/2.PDF", "in/deep/er/3.tif", "in/4.txt", ".5.jpg", ".hidden/6.jpg",
             "a.app/7.jpg", "b.doc/Contents/Info.plist", "b.doc/8.jpg", "c.doc/Contents/9.jpg",
             "d \xff/\xfe.pct", "e\n.jpg"});
  tree.fifo("fifo.jpg");
  tree.folder("folder.jpg/empty");
  for (const auto &[name, target] : {std::pair{"to file.jpg", "in/4.txt"},
                                     {"to folder.jpg", "in"},
                                     {"dangling.jpg", "nothing"},
                                     {"folder", "in"}})
    tree.link(name, target);
  const std::string all = "1.jpg c.doc/Contents/9.jpg d \xff/\xfe.pct e\n.jpg fifo.jpg in/2.PDF "
                          "in/deep/er/3.tif to file.jpg";
  const struct {
    const char *name;
    Words scopes;
    std::string expected;
  } rows[] = {
      {"the whole", {tree.path()}, all},
      {"slashes", {tree.path() + "//"}, all},
      {"below", {tree.path("in")}, "in/2.PDF in/deep/er/3.tif"},
      {"link", {tree.path("folder")}, "in/2.PDF in/deep/er/3.tif"},
      {"hidden", {tree.path(".hidden")}, ".hidden/6.jpg"},
      {"package", {tree.path("a.app")}, "a.app/7.jpg"},
      {"own package", {tree.path("b.doc")}, "b.doc/8.jpg"},
      {"blanks", {" \t" + tree.path("in") + " "}, "in/2.PDF in/deep/er/3.tif"},
      {"two", {tree.path("in/deep"), tree.path(".hidden")}, ".hidden/6.jpg in/deep/er/3.tif"},
      {"missing", {tree.path("missing")}, ""},
      {"a file", {tree.path("1.jpg")}, ""},
      {"nothing but blanks", {" "}, ""},
  };
  const SystemCallsGuard guard({.statusAt = statusAnHourAgo});
  for (const char *const round : {"first", "second", "third"})
    for (const auto &row : rows)
      EXPECT_EQ(find(row.scopes), row.expected) << row.name << ", " << round;
  // A folder whose name begins with a blank is taken before the one without.
  const std::string blank = tree.file(" in/a.jpg");
  EXPECT_EQ(find({tree.path(" in")}), " in/a.jpg");
  EXPECT_EQ(found("n="), find()) << "the walk itself";
}

TEST_F(QueryTest, DatesAreThoseOfTheDiskAndOfLinksThemselves) {
  makeFiles({"1.jpg", "2.jpg", "in/3.jpg"});
  tree.link("9.jpg", "1.jpg");
  for (const char *const name : {"1.jpg", "2.jpg", "in/3.jpg", "9.jpg"})
    tree.setModified(name, NSDate::secondsFrom1970To2001 + name[name[0] == 'i' ? 3 : 0] - '0');
  const auto two = NSDate::dateWithTimeIntervalSinceReferenceDate(2);
  const auto after =
      NSPredicate::predicateWithFormat("kMDItemFSContentChangeDate > %@", {two.get()});
  const SystemCallsGuard guard({.statusAt = statusAnHourAgo});
  EXPECT_EQ(find({tree.path()}, after), "9.jpg in/3.jpg");
  tree.setModified("1.jpg", NSDate::secondsFrom1970To2001 + 5);
  tree.setModified("9.jpg", NSDate::secondsFrom1970To2001);
  EXPECT_EQ(find({tree.path()}, after), "1.jpg in/3.jpg") << "from the index";
}

TEST_F(QueryTest, AsksForEachKnownFolderOnce) {
  for (int i = 0; i < 200; ++i)
    tree.file("folder " + std::to_string(i % 7) + "/in " + std::to_string(i % 50) + "/a.jpg");
  tree.file("folder 0/b.doc/c.txt");
  const int folders = 1 + 7 + 200 + 1;
  static std::atomic<int> asked;
  const SystemCallsGuard guard({.statusAt = [](int folder, const char *path, auto... rest) {
    // Paths relative to the scope: not the index's own files, nor file systems.
    asked += std::string_view(path).starts_with("folder ") ? 1 : 0;
    return statusAnHourAgo(folder, path, rest...);
  }});
  const std::string first = find();
  EXPECT_EQ(guard.counts().listEntries, 2 * folders);
  EXPECT_EQ(status().folders, folders);
  EXPECT_EQ(status().entries, folders + 200);
  guard.resetCounts();
  asked = 0;
  EXPECT_EQ(find(), first);
  EXPECT_EQ(guard.counts().listEntries, 0);
  EXPECT_EQ(asked, folders - 1 + 200) << "each but the scope itself, and each file found";
  tree.file("folder 3/new.jpg");
  tree.file("folder 5/new/new.jpg");
  guard.resetCounts();
  EXPECT_EQ(find().size(), first.size() + sizeof "folder 3/new.jpg folder 5/new/new.jpg");
  EXPECT_EQ(guard.counts().listEntries, 2 * 3) << "two changed, one new";
  // The index keeps folders below a hidden folder or in a package while they exist.
  tree.file("folder 1/.hidden/in/a.jpg");
  tree.file("folder 1/a.app/in/b.jpg");
  for (const bool isSecond : {false, true}) {
    guard.resetCounts();
    EXPECT_EQ(find({tree.path("folder 1/.hidden")}), "folder 1/.hidden/in/a.jpg");
    EXPECT_EQ(find({tree.path("folder 1/a.app")}), "folder 1/a.app/in/b.jpg");
    EXPECT_EQ(guard.counts().listEntries, isSecond ? 0 : 2 * 4);
    EXPECT_EQ(find().find("/in/a.jpg"), std::string::npos);
  }
}

TEST_F(QueryTest, ResultsComeInPortionsOfTheirOwn) {
  // The files of one folder are found at once, and a portion lasts 5 ms: they are announced as one,
  // unless the machine was busy elsewhere in between.
  makePhotos(40, 1);
  Clock::duration longestTurn;
  do {
    ASSERT_EQ(start({tree.path()}), 1);
    EXPECT_EQ(log, "") << "nothing is posted before the start returns";
    EXPECT_EQ(query->startQuery(), 0) << "it runs already";
    longestTurn = {};
    while (query->isGathering() != 0) {
      const auto begin = Clock::now();
      PFMainLoopDispatch();
      longestTurn = std::max(longestTurn, Clock::now() - begin);
    }
  } while (longestTurn >= std::chrono::milliseconds(5));
  EXPECT_EQ(log, "p40 !");
  // A slow handler gets one result in each turn of the loop.
  int turns = 0;
  onResult = [&] {
    performOnMainThread([&] { ++turns; });
    keepBusy(std::chrono::milliseconds(6));
    EXPECT_GE(turns + 1, static_cast<int>(results.size())) << "others have had their turn";
  };
  find();
  EXPECT_EQ(results.size(), 40U);
  EXPECT_EQ(log.substr(0, 9), "p1 p1 p1 ");
  EXPECT_EQ(std::count(log.begin(), log.end(), 'p'), 40);
  onResult = [&] { ASSERT_EQ(query->startQuery(), 0); };
  EXPECT_EQ(start({}), 0);
  EXPECT_EQ(query->resultCount(), 40U) << "a start that is refused changes nothing";
  EXPECT_EQ(start({tree.path()}, nullptr), 0);
  EXPECT_EQ(find({tree.path("missing")}), "");
  EXPECT_EQ(log, "!");
}

TEST_F(QueryTest, NothingIsToldAfterAStop) {
  makePhotos(300);
  for (const std::size_t stopAt : {0, 1, 2, 100, 300}) {
    SCOPED_TRACE(stopAt);
    onResult = [&] {
      if (results.size() == stopAt)
        query->stopQuery();
    };
    ASSERT_EQ(start({tree.path()}), 1);
    if (stopAt == 0)
      query->stopQuery();
    finishQuery();
    EXPECT_EQ(results.size(), stopAt);
    EXPECT_EQ(query->resultCount(), stopAt);
    EXPECT_EQ(log.find('!'), std::string::npos);
  }
  // Destroyed while it gathers, from inside its own notification, and started again from there.
  onResult = [&] { query = nullptr; };
  ASSERT_EQ(start({tree.path()}), 1);
  waitForThreads();
  EXPECT_EQ(results.size(), 1U);
  query = NSMetadataQuery::create();
  ASSERT_EQ(start({tree.path()}), 1);
  query = NSMetadataQuery::create();
  waitForThreads();
  EXPECT_EQ(log, "");
  int starts = 0;
  onResult = [] {};
  onFinish = [&] { EXPECT_TRUE(++starts == 3 || start({tree.path()}) == 1); };
  find();
  EXPECT_EQ(results.size(), 300U);
  EXPECT_EQ(starts, 3);
}

TEST_F(QueryTest, RunsWithoutThreadsOfItsOwn) {
  makePhotos(100, 12);
  waitForThreads();
  // Each folder takes a whole portion of the main thread's time.
  const auto openSlowly = [](auto... arguments) {
    keepBusy(std::chrono::milliseconds(5));
    return realSystemCalls().openAt(arguments...);
  };
  static std::atomic<int> threads;
  const auto startFew = [](auto... arguments) {
    return threads-- > 0 ? realSystemCalls().startThread(arguments...) : EAGAIN;
  };
  const SystemCallsGuard guard({.openAt = openSlowly, .startThread = startFew});
  for (const int count : {0, 1}) {
    threads = count;
    find();
    EXPECT_EQ(results.size(), 100U) << count;
  }
}

TEST_F(QueryTest, DelaysWaitForIt) {
  tree.file("a.jpg");
  bool isOver = false;
  onFinish = [&] { isOver = true; };
  performAfterDelay(0.001, [&] { EXPECT_TRUE(isOver); });
  find();
  EXPECT_TRUE(isOver);
}

TEST_F(QueryTest, FoldersThatMayNotBeSearched) {
  makeFiles({"a.jpg", "bad/b.jpg", "bad/in/c.jpg", "good/d.jpg"});
  static const std::string table = tree.file("mounts", "1 2 3:4 / /mnt/bad rw - ext4 disk rw\n");
  const auto openTable = [](int flags) { return open(table.c_str(), flags); };
  const struct {
    const char *name;
    decltype(SystemCalls::statusAt) statusAt;
    decltype(SystemCalls::openAt) openAt;
    const char *first, *second;
  } rows[] = {{"the root of a mounted file system",
               [](int folder, const char *path, int flags, struct statx *status) {
                 const int result = statusAnHourAgo(folder, path, flags, status);
                 if (std::string_view(path).ends_with("bad"))
                   status->stx_attributes |= STATX_ATTR_MOUNT_ROOT;
                 return result;
               },
               nullptr, "a.jpg good/d.jpg", "a.jpg good/d.jpg"},
              {"unreadable", statusAnHourAgo,
               [](int folder, const char *path, int flags) {
                 const bool isBad = std::string_view(path).find("/bad") != std::string_view::npos;
                 return isBad && !std::string_view(path).ends_with("in/.")
                            ? (errno = EACCES, -1)
                            : realSystemCalls().openAt(folder, path, flags);
               },
               "a.jpg good/d.jpg", nullptr},
              {"all is well", statusAnHourAgo, nullptr, "a.jpg bad/b.jpg bad/in/c.jpg good/d.jpg",
               "a.jpg bad/b.jpg bad/in/c.jpg good/d.jpg"}};
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    const SystemCallsGuard guard(
        {.openAt = row.openAt, .statusAt = row.statusAt, .openMountTable = openTable});
    PFMetadataIndexClear();
    EXPECT_EQ(find(), row.first);
    EXPECT_EQ(find(), row.second != nullptr ? row.second : row.first);
  }
  // With everything recorded, the disk still decides.
  const SystemCallsGuard guard({.statusAt = rows[0].statusAt, .openMountTable = openTable});
  EXPECT_EQ(find(), rows[0].first);
}

TEST_F(QueryTest, ListingsThatTellNoKinds) {
  makeFiles({"a.jpg", "in/b.jpg", "in.app/c.jpg"});
  tree.link("link.jpg", "a.jpg");
  tree.link("folder", "in");
  const SystemCallsGuard guard({.listEntries = listWithoutKinds, .statusAt = statusAnHourAgo});
  for (int round = 0; round < 2; ++round)
    EXPECT_EQ(find(), "a.jpg in/b.jpg link.jpg");
}

} // namespace

} // namespace searchsystem
