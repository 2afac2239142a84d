#include "platform/metadata/FolderGatherer.h"
#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/FolderStatus.h"
#include "tests/metadata/QueryFixture.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <fstream>
#include <linux/magic.h>
#include <random>
#include <sys/file.h>
#include <sys/statfs.h>

namespace searchsystem {

namespace {

TEST(FolderStatus, ChangesWithinOneTickAreTold) {
  constexpr struct {
    const char *name;
    FileMoment changed, begin;
    bool isSettled;
  } rows[] = {{"long ago", {5, 1}, {100, 0}, true},
              {"a moment ago", {5, 100'000'000}, {5, 150'000'000}, true},
              {"over a second's end", {5, 999'000'000}, {6, 100'000'000}, true},
              {"just now", {5, 100'000'000}, {5, 100'000'000}, false},
              {"a tick ago", {5, 100'000'000}, {5, 110'000'000}, false},
              {"in the future", {6, 1}, {5, 999'999'999}, false},
              {"whole seconds, the same", {5, 0}, {5, 999'999'999}, false},
              {"whole seconds, the next", {5, 0}, {6, 0}, true},
              {"before 1970", {-3, 1}, {5, 0}, true},
              {"the first of all", {INT64_MIN, 1}, {5, 0}, true},
              {"the last of all", {INT64_MAX, 1}, {5, 0}, false}};
  for (const auto &row : rows)
    EXPECT_EQ(isSettled(row.changed, row.begin, longestTick), row.isSettled) << row.name;
}

using namespace std::string_view_literals;

TEST(FolderRecord, ShowsDamageOfAnyByte) {
  FolderListing listing;
  for (const char *const name : {"b", "a b", "a"})
    listing.add(FileKind::Folder, name);
  for (const char *const name : {".hidden", "file", "Content\xc5\xbf", "caf\xc3\xa9", "z"})
    listing.add(FileKind::Regular, name);
  listing.add(FileKind::Link, "link");
  listing.add(FileKind::Folder, "a.APP");
  const FolderRecord::Facts facts{.part = 3, .day = 4, .listing = 5, .owner = 6, .inode = 7};
  std::string packed;
  FolderRecord::pack(packed, "/a/folder", facts, listing.names());
  const auto take = [](std::string_view bytes, std::string &path) {
    std::optional<FolderRecord> record = FolderRecord::take(bytes, path);
    return record && record->isWhole(path) ? record : std::nullopt;
  };
  std::string path;
  const auto record = take(packed, path);
  ASSERT_TRUE(record);
  EXPECT_EQ(path, "/a/folder");
  const FolderNames &names = record->names();
  EXPECT_EQ(names.folders, "a\0a b\0b\0"sv);
  EXPECT_EQ(names.links, "link\0"sv);
  EXPECT_EQ(names.files, "file\0z\0"sv);
  EXPECT_EQ(names.otherFiles, "caf\xc3\xa9\0"sv);
  EXPECT_EQ(names.foldingFiles, "Content\xc5\xbf\0"sv);
  EXPECT_TRUE(names.mayHoldContents);
  EXPECT_EQ(record->facts().part, 3);
  // The same after another record, with which it shares the beginning of the path.
  std::string after;
  record->appendTo(after, path, "/a/fold");
  EXPECT_LE(after.size(), packed.size());
  std::string before = "/a/fold";
  EXPECT_TRUE(take(after, before));
  for (std::string *const bytes : {&packed, &after})
    for (std::size_t i = 0; i < bytes->size(); ++i) {
      (*bytes)[i] ^= 4;
      path = bytes == &after ? "/a/fold" : "";
      EXPECT_FALSE(take(*bytes, path)) << i;
      (*bytes)[i] ^= 4;
      EXPECT_FALSE(take(bytes->substr(0, i), path)) << i;
    }
}

/// A system that a test makes strange.
struct Strange {
  /// Those that change files fail from one on.
  static inline int left;
  static inline bool hasFailed;
  /// All folders are on an overlay, merged from several layers, or have times of whole seconds.
  static inline bool isOverlay, areMerged, areTimesWhole;
  static inline bool isDiskFull;
  /// An entry that is gone though its folder has not changed.
  static inline std::string lost;
  /// What the table of users' numbers holds.
  static inline std::string userTable;

  static void reset() {
    left = INT_MAX;
    hasFailed = isOverlay = areMerged = areTimesWhole = isDiskFull = false;
    lost = userTable = {};
  }

  static bool fail() {
    if (--left > 0)
      return false;
    errno = ENOSPC;
    return hasFailed = true;
  }

  static constexpr SystemCalls calls{
      .openAt =
          [](int folder, const char *path, int flags) {
            const bool isTable = !userTable.empty() && std::string_view(path).ends_with("uid_map");
            return openat(folder, isTable ? userTable.c_str() : path, flags);
          },
      .statusAt =
          [](int folder, const char *path, int flags, struct statx *status) {
            if (!lost.empty() && std::string_view(path).ends_with(lost))
              return errno = ENOENT, -1;
            const int result = statusAnHourAgo(folder, path, flags, status);
            if (areTimesWhole)
              status->stx_ctime.tv_nsec = 0;
            if (areMerged && S_ISDIR(status->stx_mode))
              status->stx_nlink = 1;
            return result;
          },
      .fileSystemOf =
          [](int file, struct statfs *disk) {
            const int result = fstatfs(file, disk);
            if (isOverlay)
              disk->f_type = OVERLAYFS_SUPER_MAGIC;
            if (isDiskFull)
              disk->f_bavail =
                  std::min<fsblkcnt_t>(disk->f_blocks / 20, (256 << 20) / disk->f_bsize);
            return result;
          },
      .removeFile = [](const char *path) { return fail() ? -1 : unlink(path); },
      .writeAt = [](int file, const void *bytes, std::size_t size, off_t offset) -> ssize_t {
        return fail() ? -1 : pwrite(file, bytes, size, offset);
      },
      .setSize = [](int file, off_t size) { return fail() ? -1 : ftruncate(file, size); },
      .renameFile = [](const char *from, const char *to) { return fail() ? -1 : rename(from, to); },
  };
};

class IndexTest : public QueryFixture {
protected:
  IndexTest() {
    Strange::reset();
    for (int i = 0; i < 40; ++i)
      tree.file("folder " + std::to_string(i % 7) + "/in " + std::to_string(i) + "/a.jpg");
    all = find();
    guard.resetCounts();
  }

  static std::string file() { return PFMetadataIndexGetPath(); }

  /// How many folders a query lists; it must find every file.
  int listed() {
    EXPECT_EQ(find(), all);
    const int calls = guard.counts().listEntries;
    guard.resetCounts();
    return calls / 2;
  }

  static constexpr int folders = 1 + 7 + 40;
  const SystemCallsGuard guard{Strange::calls};
  std::string all;
};

/// Changes a tree at random, in all the ways that a user or a program might.
class Changes {
public:
  explicit Changes(TemporaryTree &tree, std::uint32_t seed) : tree_(tree), random_(seed) {}

  void change() {
    const std::string a = anyPath(), b = anyPath();
    const std::string inA = a + "/" + fileName(), inB = b + "/" + fileName();
    const auto rename = [this](const std::string &from, const std::string &to, unsigned flags = 0) {
      renameat2(AT_FDCWD, tree_.path(from).c_str(), AT_FDCWD, tree_.path(to).c_str(), flags);
    };
    std::error_code ignored;
    const std::function<void()> kinds[] = {
        [&] { tree_.file(inA, "new"); },
        [&] { tree_.file(inB, "new"); },
        [&] { tree_.folder(a); },
        [&] { tree_.file(a + "/Contents/Info.plist"); },
        [&] { tree_.link(inA, tree_.path(inB)); },
        [&] { rename(inA, inB); },
        [&] { rename(a, b); },
        [&] { rename(a, b + " moved"), tree_.link(a, tree_.path(b + " moved")); },
        [&] { tree_.setModified(a, random_() % 1000), rename(a, b, RENAME_EXCHANGE); },
        [&] { std::filesystem::remove_all(tree_.path(a), ignored); },
    };
    try {
      kinds[random_() % std::size(kinds)]();
    } catch (const std::system_error &) {
      // Changes that are impossible in this tree are left out.
    }
  }

private:
  /// A folder, up to three levels deep; few names, so that they are met again.
  std::string anyPath() {
    constexpr const char *names[] = {"a", "b", "a b", "c.doc", ".h", "d.app", "\xc3\xa9"};
    std::string path = names[random_() % 7];
    for (std::uint32_t depth = random_() % 3; depth > 0; --depth)
      path += std::string("/") + names[random_() % 7];
    return path;
  }

  std::string fileName() {
    constexpr const char *names[] = {"1.jpg", "2.PDF", "3.txt", ".4.tif"};
    return names[random_() % 4];
  }

  TemporaryTree &tree_;
  std::mt19937 random_;
};

/// Odd numbers stand for a file system whose clock counts whole seconds.
class ChangesTest : public QueryFixture, public testing::WithParamInterface<std::uint32_t> {
protected:
  static int statusInSeconds(int folder, const char *path, int flags, struct statx *status) {
    const int result = realSystemCalls().statusAt(folder, path, flags, status);
    status->stx_ctime.tv_nsec = 0;
    return result;
  }
};

TEST_P(ChangesTest, NeverMakeItWrong) {
  Changes changes(tree, GetParam());
  const bool isCoarse = GetParam() % 2 != 0;
  const SystemCallsGuard guard({.statusAt = isCoarse ? statusInSeconds : nullptr});
  int known = 0;
  for (int step = 0; step < 600; ++step) {
    const int count = step % 50 == 0 ? 40 : step % 3;
    for (int i = 0; i < count; ++i)
      changes.change();
    const std::string walked = found("n=");
    const int folders = guard.counts().listEntries / 2;
    guard.resetCounts();
    // The next change comes right after this query.
    ASSERT_EQ(find(), walked) << step;
    known += folders - guard.counts().listEntries / 2;
    guard.resetCounts();
  }
  if (isCoarse)
    EXPECT_LE(known, 0) << "whole seconds prove nothing";
  else
    EXPECT_GT(known, 500) << "the index has been of use";
}

INSTANTIATE_TEST_SUITE_P(Seeds, ChangesTest, testing::Range(1U, 5U));

TEST_F(IndexTest, WhatIsBrokenIsMadeAnew) {
  const std::pair<const char *, void (*)()> rows[] = {
      {"none", [] {}},
      {"gone", [] { std::filesystem::remove(file()); }},
      {"empty", [] { std::filesystem::resize_file(file(), 0); }},
      {"cut short", [] { std::filesystem::resize_file(file(), 1000); }},
      {"something else", [] { std::ofstream(file()) << std::string(10'000, 'x'); }},
      {"older form", [] { std::fstream(file()) << "folders1"; }},
      {"open to others", [] { chmod(file().c_str(), 0666); }},
      {"open folder", [] { chmod(std::filesystem::path(file()).parent_path().c_str(), 0777); }},
      {"second link", [] { std::filesystem::create_hard_link(file(), file() + ".copy"); }},
  };
  for (const auto &[name, damage] : rows) {
    SCOPED_TRACE(name);
    ASSERT_EQ(listed(), 0);
    damage();
    EXPECT_EQ(listed(), std::string_view(name) == "none" ? 0 : folders);
    EXPECT_EQ(listed(), 0) << "repaired";
    EXPECT_EQ(std::filesystem::status(file()).permissions(), std::filesystem::perms(0600));
  }
}

TEST_F(IndexTest, WhereThereCanBeNone) {
  cache.file("file");
  cache.link("link", "nowhere");
  cache.folder("1/SearchSystem/folders-2.index");
  cache.file("2/SearchSystem");
  cache.link("3/SearchSystem", cache.path("1"));
  cache.folder("pipe/SearchSystem");
  cache.folder("lock/SearchSystem");
  cache.fifo("pipe/SearchSystem/folders-2.index");
  cache.fifo("lock/SearchSystem/folders-2.lock");
  cache.link("linked/SearchSystem/folders-2.index", file());
  cache.folder("new/SearchSystem/folders-2.new");
  for (const char *const folder : {"file", "link", "1", "2", "3", "pipe", "lock", "linked", "new",
                                   "missing/missing", "/proc"}) {
    SCOPED_TRACE(folder);
    IndexPlace::setCacheFolderForTesting(*folder == '/' ? folder : cache.path(folder));
    EXPECT_EQ(listed(), folders);
    EXPECT_EQ(listed(), folders);
    PFMetadataIndexStatus none{};
    EXPECT_LE(PFMetadataIndexGetStatus(&none) + none.folders, 1);
  }
}

TEST_F(IndexTest, FoldersThatProveNothingAreListed) {
  const std::string otherUsers = cache.file("table", "0 1000 1\n");
  const struct {
    const char *name;
    std::function<void()> become;
    bool isStrange;
  } rows[] = {
      {"overlay, not merged", [] { Strange::isOverlay = true; }, false},
      {"overlay, merged", [] { Strange::isOverlay = Strange::areMerged = true; }, true},
      {"one link", [] { Strange::areMerged = true; }, false},
      {"times of whole seconds", [] { Strange::areTimesWhole = true; }, true},
      {"a table of users that cannot be read", [] { Strange::userTable = "/missing"; }, true},
      {"a full disk", [] { Strange::isDiskFull = true; }, true},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    // With records of before, and without.
    for (const bool isCleared : {false, true}) {
      Strange::reset();
      listed();
      ASSERT_EQ(listed(), 0);
      row.become();
      if (isCleared || Strange::isOverlay)
        PFMetadataIndexClear();
      const bool isKept = Strange::isDiskFull && !isCleared;
      listed();
      EXPECT_EQ(listed(), row.isStrange && !isKept ? folders : 0);
    }
  }
  Strange::reset();
  PFMetadataIndexClear();
  listed();
  Strange::userTable = otherUsers;
  EXPECT_EQ(listed(), folders) << "the same user in another namespace";
  EXPECT_EQ(listed(), 0);
}

TEST_F(IndexTest, FilesThatAreGoneThoughNothingShowsIt) {
  Strange::lost = "in 8/a.jpg";
  const std::size_t begin = all.find("folder 1/in 8/a.jpg ");
  ASSERT_NE(begin, std::string::npos);
  all.erase(begin, sizeof "folder 1/in 8/a.jpg " - 1);
  EXPECT_EQ(listed(), 0);
}

TEST_F(IndexTest, FolderWithVeryManyFiles) {
  for (int i = 0; i < 3000; ++i)
    tree.file("many/" + std::string(100, 'n') + std::to_string(i) + (i % 9 == 0 ? ".jpg" : ""));
  tree.file("many/in/b.jpg");
  tree.folder("many/more");
  all = find();
  EXPECT_EQ(status().folders, folders + 3);
  EXPECT_EQ(status().entries, folders - 1 + 40 + 1 + 3000 + 2 + 1);
  listed();
  EXPECT_EQ(listed(), 0);
  tree.file("many/new");
  EXPECT_GE(listed(), 1);
  EXPECT_EQ(listed(), 0);
  // One of its parts is damaged.
  std::string bytes(std::filesystem::file_size(file()), '\0');
  std::fstream index(file());
  index.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  for (const std::size_t damaged : {bytes.size() / 4, bytes.size() / 2, bytes.size() * 3 / 4}) {
    const char changed = bytes[damaged] == 'x' ? 'y' : 'x';
    std::fstream(file()).seekp(static_cast<std::streamoff>(damaged)).put(changed);
    EXPECT_GE(listed(), 1);
    EXPECT_EQ(listed(), 0);
  }
}

/// A small index, each byte of which is damaged, and which is cut off at each.
TEST_F(IndexTest, DamageOfAnyByteIsRepaired) {
  tree.file("small/in/a.jpg");
  tree.file("small/\xc3\xa9.jpg");
  const std::string small = tree.path("small");
  PFMetadataIndexClear();
  find({small});
  std::string good(std::filesystem::file_size(file()), '\0');
  std::ifstream(file()).read(good.data(), static_cast<std::streamsize>(good.size()));
  ASSERT_LT(good.size(), 1000U);
  for (std::size_t i = 0; i < good.size(); ++i)
    for (const bool isCut : {false, true}) {
      std::string bytes = good;
      bytes[i] ^= 1 << i % 8;
      std::ofstream(file()) << (isCut ? bytes.substr(0, i) : bytes);
      EXPECT_EQ(find({small}), "small/in/a.jpg small/\xc3\xa9.jpg") << i;
      guard.resetCounts();
      find({small});
      ASSERT_EQ(guard.counts().listEntries, 0) << i << (isCut ? " cut" : "");
    }
}

TEST_F(IndexTest, OthersAndTheirRecordsAreNotReliedOn) {
  if (geteuid() != 0)
    GTEST_SKIP() << "only root can be somebody else";
  const gid_t group = getegid();
  ASSERT_EQ(setegid(group + 1), 0);
  EXPECT_EQ(listed(), folders) << "made by another group";
  EXPECT_EQ(listed(), 0);
  ASSERT_EQ(setegid(group), 0);
  EXPECT_EQ(listed(), folders);
  cache.folder("others");
  ASSERT_EQ(chown(cache.path("others").c_str(), 1, 1), 0);
  IndexPlace::setCacheFolderForTesting(cache.path("others"));
  EXPECT_EQ(listed(), folders);
  EXPECT_EQ(listed(), folders);
  IndexPlace::setCacheFolderForTesting(cache.path("others/missing"));
  EXPECT_EQ(listed(), folders);
  EXPECT_TRUE(std::filesystem::is_empty(cache.path("others")));
}

TEST_F(IndexTest, TellsItsSizeAndIsCleared) {
  IndexPlace::setCacheFolderForTesting(cache.path("new"));
  EXPECT_EQ(file(), cache.path("new/SearchSystem/folders-2.index"));
  EXPECT_EQ(status().size, 0);
  EXPECT_EQ(PFMetadataIndexClear(), 1);
  for (int i = 0; i < 4000; ++i)
    tree.file("many " + std::to_string(i / 40) + "/A name as files have it " + std::to_string(i));
  find();
  const PFMetadataIndexStatus filled = status();
  EXPECT_EQ(filled.folders, folders + 100);
  EXPECT_EQ(filled.entries, folders - 1 + 40 + 100 + 4000);
  EXPECT_LE(filled.size, 40 * filled.entries);
  EXPECT_EQ(filled.size, static_cast<std::int64_t>(std::filesystem::file_size(file())));
  for (int i = 1; i < 100; ++i)
    std::filesystem::remove_all(tree.path("many " + std::to_string(i)));
  find();
  EXPECT_EQ(status().folders, folders + 1);
  EXPECT_LT(status().size, filled.size / 2) << "gives back what it does not need";
  EXPECT_EQ(PFMetadataIndexClear(), 1);
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(IndexTest, RecordsThatNoQueryFindsTrueEnd) {
  const auto records = [] {
    bool isBroken = false;
    return std::make_unique<IndexMerge>(
        std::vector{IndexFile::open(*IndexPlace::current(), isBroken)}, "");
  };
  // As if all had been made some days ago, and one of a folder that is gone.
  const auto age = [&](int days) {
    RecordBatch batch;
    for (const auto index = records(); index->next();) {
      FolderRecord::Facts facts = index->record().facts();
      facts.day = static_cast<std::uint16_t>(today() - days);
      batch.add(index->path(), facts, index->record().names());
    }
    batch.add(
        "/gone",
        {.kind = FolderRecord::Kind::PathOnly, .day = static_cast<std::uint16_t>(today() - days)},
        {});
    batch.sort();
    const IndexPlace place = *IndexPlace::current();
    EXPECT_TRUE(IndexUpdate::begin(place)->finish(batch, true));
  };
  age(89);
  EXPECT_EQ(status().folders, folders + 1);
  EXPECT_EQ(listed(), 0);
  for (const auto index = records(); index->next();)
    EXPECT_EQ(index->record().facts().day, today() - (index->path() == "/gone" ? 89 : 0));
  age(91);
  EXPECT_EQ(status().folders, 0);
  EXPECT_EQ(listed(), folders);
}

TEST_F(IndexTest, AnotherThatWritesIsNotWaitedFor) {
  const int other =
      open((std::filesystem::path(file()).parent_path() / "folders-2.lock").c_str(), O_RDONLY);
  ASSERT_EQ(flock(other, LOCK_EX), 0);
  EXPECT_EQ(listed(), 0);
  tree.file("folder 1/new.jpg");
  all = find();
  guard.resetCounts();
  EXPECT_EQ(listed(), 1);
  EXPECT_EQ(listed(), 1) << "what was learnt could not be written";
  close(other);
  EXPECT_EQ(listed(), 1);
  EXPECT_EQ(listed(), 0);
}

TEST_F(IndexTest, TwoQueriesShareIt) {
  for (int round = 0; round < 20; ++round) {
    PFMetadataIndexClear();
    const Ref<NSMetadataQuery> other = NSMetadataQuery::create();
    other->setPredicate(anyKind());
    other->setSearchScopes(arrayOf({tree.path()}));
    ASSERT_EQ(other->startQuery(), 1);
    EXPECT_EQ(find(), all);
    EXPECT_EQ(other->isGathering(), 0);
    EXPECT_EQ(other->resultCount(), results.size());
    listed();
    ASSERT_EQ(listed(), 0);
  }
}

TEST_F(IndexTest, StreamThatIsGivenUpLosesNothing) {
  for (int i = 0; i < 300; ++i)
    tree.file("many " + std::to_string(i % 30) + "/in " + std::to_string(i) + "/a.jpg");
  all = find();
  const std::optional<IndexPlace> place = IndexPlace::current();
  const Ref<const NSPredicate> predicate = anyKind();
  const std::atomic<bool> isStopped{false};
  constexpr int chunks = (folders + 30 + 300) / 128 + 1;
  for (int merged = 0; merged <= chunks; ++merged) {
    IndexWriter writer(std::nullopt);
    FolderQueue queue(nullptr);
    FolderGatherer gatherer({*predicate, place, writer, queue, isStopped});
    FolderQueue::Tasks tasks;
    FolderGatherer::Results gathered;
    queue.add({FolderTask::Kind::Records, "", RecordStream::open(tree.path(), *place, writer)});
    guard.resetCounts();
    for (int count = 0; const auto task = queue.next(tasks);) {
      if (task->stream && count++ == merged)
        task->stream->giveUp(tasks);
      gatherer.process(*task, tasks, gathered);
    }
    results.clear();
    for (const auto &path : gathered)
      results.push_back(relative(path->view()));
    EXPECT_EQ(sortedResults(), all) << merged;
    EXPECT_EQ(guard.counts().listEntries > 0, merged < chunks) << merged;
  }
}

TEST_F(IndexTest, DiskFullOrProcessKilledAtAnyChange) {
  // So many folders that a change is appended.
  for (int i = 0; i < 400; ++i)
    tree.file("more " + std::to_string(i % 9) + "/" + std::to_string(i) + "/" +
              std::string(100, 'n'));
  all = find();
  int count = 0;
  for (const bool isThere : {false, true}) {
    Strange::hasFailed = true;
    for (int number = 1; Strange::hasFailed; ++number) {
      SCOPED_TRACE(std::to_string(number) + (isThere ? ", with an index" : ""));
      Strange::left = INT_MAX;
      if (!isThere)
        PFMetadataIndexClear();
      tree.file("folder 1/new " + std::to_string(++count));
      Strange::left = number;
      Strange::hasFailed = false;
      EXPECT_EQ(find(), all);
      const bool hasFailed = Strange::hasFailed;
      Strange::left = INT_MAX;
      EXPECT_EQ(find(), all);
      guard.resetCounts();
      EXPECT_EQ(find(), all);
      ASSERT_EQ(guard.counts().listEntries, 0) << "repaired";
      Strange::hasFailed = hasFailed;
    }
  }
}

} // namespace

} // namespace searchsystem
