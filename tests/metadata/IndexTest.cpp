#include "platform/metadata/FolderRecord.h"
#include "tests/metadata/QueryFixture.h"

#include <csignal>
#include <fstream>
#include <random>
#include <sqlite3.h>

namespace {

TEST(FolderStatus, ChangesWithinOneTickAreTold) {
  constexpr struct {
    const char *name;
    FileMoment changed, begin;
    bool isSettled;
  } rows[] = {
      {"long ago", {5, 1}, {100, 0}, true},
      {"a moment ago", {5, 100'000'000}, {5, 150'000'000}, true},
      {"over a second's end", {5, 999'000'000}, {6, 100'000'000}, true},
      {"just now", {5, 100'000'000}, {5, 100'000'000}, false},
      {"a tick ago", {5, 100'000'000}, {5, 110'000'000}, false},
      {"in the future", {6, 1}, {5, 999'999'999}, false},
      {"whole seconds, the same", {5, 0}, {5, 999'999'999}, false},
      {"whole seconds, the next", {5, 0}, {6, 0}, true},
      {"before 1970", {-3, 1}, {5, 0}, true},
  };
  for (const auto &row : rows)
    EXPECT_EQ(isSettled(row.changed, row.begin), row.isSettled) << row.name;
}

TEST(FolderRecord, IsForOneFolderAtOneMomentAndUndamaged) {
  constexpr FolderIdentity folder{7, 8};
  constexpr FileMoment moment{9, 10};
  FolderListing listing;
  for (const char *const name : {"b", "a b", "a"})
    listing.add(FileKind::Folder, name);
  for (const char *const name : {".hidden", "file", "Content\xc5\xbf"})
    listing.add(FileKind::Regular, name);
  listing.add(FileKind::Link, "link");
  listing.add(FileKind::Folder, "a.APP");
  const std::string record = FolderRecord::pack(folder, moment, listing.names());
  const auto names = FolderRecord::unpack(folder, moment, record);
  ASSERT_TRUE(names);
  using namespace std::string_view_literals;
  EXPECT_EQ(names->folders, "a\0a b\0b\0"sv);
  EXPECT_EQ(names->files, "file\0Content\xc5\xbf\0"sv);
  EXPECT_EQ(names->links, "link\0"sv);
  EXPECT_TRUE(names->mayHoldContents);
  EXPECT_FALSE(FolderRecord::unpack({8, 8}, moment, record));
  EXPECT_FALSE(FolderRecord::unpack({7, 9}, moment, record));
  EXPECT_FALSE(FolderRecord::unpack(folder, {9, 11}, record));
  for (std::size_t i = 0; i < record.size(); ++i) {
    std::string damaged = record;
    damaged[i] ^= 4;
    EXPECT_FALSE(FolderRecord::unpack(folder, moment, damaged)) << i;
    EXPECT_FALSE(FolderRecord::unpack(folder, moment, record.substr(0, i))) << i;
  }
}

class IndexTest : public QueryFixture {
protected:
  IndexTest() {
    calls.statusAt = statusAnHourAgo;
    for (int i = 0; i < 40; ++i)
      tree.file("folder " + std::to_string(i % 7) + "/in " + std::to_string(i % 20) + "/" +
                std::to_string(i) + ".jpg");
  }

  std::string file() const { return PFMetadataIndexGetPath(); }

  /// How many folders a query lists, which finds `all`.
  int listed() {
    EXPECT_EQ(find(), all);
    const int count = guard.counts().openAt;
    guard.resetCounts();
    return count;
  }

  SystemCalls calls{};
  const SystemCallsGuard guard{[this] {
    calls.statusAt = statusAnHourAgo;
    return calls;
  }()};
  const std::string all = [this] {
    for (int i = 0; i < 40; ++i)
      tree.file("folder " + std::to_string(i % 7) + "/in " + std::to_string(i % 20) + "/" +
                std::to_string(i) + ".jpg");
    return find();
  }();
};

/// Changes a tree at random, in all the ways that a user or a program might.
class Changes {
public:
  explicit Changes(TemporaryTree &tree, std::uint32_t seed) : tree_(tree), random_(seed) {}

  void change() {
    const std::string a = anyPath();
    const std::string b = anyPath();
    std::error_code ignored;
    try {
      switch (random_() % 12) {
      case 0:
      case 1:
      case 2:
        tree_.file(a + "/" + fileName(), "new");
        break;
      case 3:
        tree_.folder(a);
        break;
      case 4:
        std::filesystem::remove_all(tree_.path(a), ignored);
        break;
      case 5:
      case 6:
        std::filesystem::rename(tree_.path(a), tree_.path(b), ignored);
        break;
      case 7:
        std::filesystem::rename(tree_.path(a + "/" + fileName()),
                                tree_.path(b + "/" + fileName()), ignored);
        break;
      case 8:
        // A folder replaced by a link to where it is now.
        std::filesystem::rename(tree_.path(a), tree_.path(b + " moved"), ignored);
        tree_.link(a, tree_.path(b + " moved"));
        break;
      case 9:
        tree_.link(a + "/" + fileName(), tree_.path(b + "/" + fileName()));
        break;
      case 10:
        tree_.file(a + "/Contents/Info.plist");
        break;
      default:
        tree_.setModified(a, static_cast<std::int64_t>(random_() % 1000));
        renameat2(AT_FDCWD, tree_.path(a).c_str(), AT_FDCWD, tree_.path(b).c_str(), 2);
        break;
      }
    } catch (const std::system_error &) {
      // What cannot be done to this tree is not done.
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

class ChangesTest : public QueryFixture, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(ChangesTest, NeverMakeItWrong) {
  Changes changes(tree, GetParam());
  Request request = makeRequest("n=");
  const SystemCallsGuard guard;
  int known = 0;
  for (int step = 0; step < 500; ++step) {
    const int count = step % 50 == 0 ? 40 : step % 3;
    for (int i = 0; i < count; ++i)
      changes.change();
    const std::string walked = searchSorted(request);
    const int folders = guard.counts().openAt;
    guard.resetCounts();
    // What changes next does so right after this query.
    ASSERT_EQ(find() + " !", walked.starts_with(' ') ? walked.substr(1) : walked) << step;
    known += folders - guard.counts().openAt;
    guard.resetCounts();
  }
  EXPECT_GT(known, 500) << "the index has been of use";
}

INSTANTIATE_TEST_SUITE_P(Seeds, ChangesTest, testing::Range(1U, 7U));

TEST_F(IndexTest, WhatIsBrokenIsMadeAnew) {
  using Damage = void (*)(const std::string &);
  const std::pair<const char *, Damage> rows[] = {
      {"none", [](const std::string &) {}},
      {"gone", [](const std::string &file) { std::filesystem::remove(file); }},
      {"empty", [](const std::string &file) { std::filesystem::resize_file(file, 0); }},
      {"cut short", [](const std::string &file) { std::filesystem::resize_file(file, 9000); }},
      {"something else",
       [](const std::string &file) {
         std::ofstream(file) << std::string(10'000, 'x');
       }},
      {"page lost",
       [](const std::string &file) {
         std::fstream(file).seekp(8192 + 8).write(std::string(8000, '\xff').data(), 8000);
       }},
      {"another's table",
       [](const std::string &file) {
         sqlite3 *database = nullptr;
         sqlite3_open(file.c_str(), &database);
         EXPECT_EQ(sqlite3_exec(database,
                                "CREATE TRIGGER t AFTER INSERT ON folder BEGIN DELETE FROM folder; "
                                "END",
                                nullptr, nullptr, nullptr),
                   SQLITE_OK);
         sqlite3_close(database);
       }},
      {"open to others", [](const std::string &file) { chmod(file.c_str(), 0666); }},
      {"open folder",
       [](const std::string &file) {
         chmod(std::filesystem::path(file).parent_path().c_str(), 0777);
       }},
      {"second link",
       [](const std::string &file) { std::filesystem::create_hard_link(file, file + ".copy"); }},
  };
  const int folders = 1 + 7 + 40;
  listed();
  for (const auto &[name, damage] : rows) {
    SCOPED_TRACE(name);
    ASSERT_EQ(listed(), 0);
    damage(file());
    const int count = listed();
    EXPECT_EQ(count, std::string_view(name) == "none" ? 0 : folders);
    EXPECT_EQ(listed(), 0) << "repaired";
    EXPECT_EQ(std::filesystem::status(file()).permissions(), std::filesystem::perms(0600));
  }
}

} // namespace
