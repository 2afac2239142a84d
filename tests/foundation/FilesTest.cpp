#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/LaunchServices.h"
#include "platform/foundation/MountPoints.h"
#include "platform/foundation/NSWorkspace.h"
#include "testing/SystemCallsGuard.h"
#include "testing/TemporaryTree.h"

#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace searchsystem {

namespace {

using namespace std::string_literals;
using Existence = FileItem::Existence;

constexpr std::uint32_t alias = kLSItemInfoIsAliasFile, symlinkFlag = kLSItemInfoIsSymlink;

/// Calls `look` with each item of a folder, as its listing names it; answers with the names.
std::set<std::string> forEachItem(
    const std::string &folder, const std::function<void(FileItem &)> &look = [](FileItem &) {}) {
  std::set<std::string> names;
  auto listing = DirectoryListing::open(folder);
  while (const auto entry = listing->next()) {
    FileItem item(*listing, *entry);
    EXPECT_TRUE(names.emplace(item.name()).second) << item.name();
    look(item);
  }
  return names;
}

TEST(DirectoryListing, TellsEveryNameOnce) {
  TemporaryTree tree;
  std::set<std::string> names{"caf\xe9", ".hidden", "a b\n", "...", std::string(255, 'n')};
  for (int i = 0; i < 700; ++i)
    names.insert("a name that takes more than one call to list " + std::to_string(i));
  for (const std::string &name : names)
    tree.file(name);
  EXPECT_EQ(forEachItem(tree.path()), names);
  for (const auto &path : {tree.path("..."), tree.fifo("fifo"), tree.path("missing"), ""s})
    EXPECT_FALSE(DirectoryListing::open(path)) << path;
  SystemCalls failing{};
  failing.listEntries = [](int, void *, std::size_t) -> ssize_t { return errno = EIO, -1; };
  const SystemCallsGuard calls(failing);
  EXPECT_TRUE(forEachItem(tree.path()).empty()) << "a listing that breaks off ends";
  auto listing = DirectoryListing::open(tree.path());
  static_cast<void>(listing->next());
  EXPECT_TRUE(DirectoryListing(std::move(*listing)).hasBrokenOff());
}

TEST(FileStatusTest, TimesThatAreBeyondReckoning) {
  static std::int64_t seconds;
  SystemCalls replaced{};
  replaced.statusAt = [](int folder, const char *path, int flags, struct statx *status) {
    const int result = realSystemCalls().statusAt(folder, path, flags, status);
    status->stx_ctime.tv_sec = seconds;
    return result;
  };
  const SystemCallsGuard calls(replaced);
  for (const std::int64_t time : {INT64_MIN, std::int64_t{0}, INT64_MAX}) {
    seconds = time;
    const auto status = fileStatus(currentFolder, "/", FollowLink::No);
    EXPECT_EQ(status->changeTime.seconds, time);
    EXPECT_EQ(status->isSettled, time <= 0) << time;
  }
}

TEST(FileStatusTest, MountPointsOfAKernelThatDoesNotTellThem) {
  SystemCalls replaced{};
  replaced.statusAt = [](int folder, const char *path, int flags, struct statx *status) {
    const int result = realSystemCalls().statusAt(folder, path, flags, status);
    status->stx_attributes_mask = status->stx_attributes = 0;
    return result;
  };
  const SystemCallsGuard calls(replaced);
  const TemporaryTree tree;
  for (const auto &[path, expected] : {std::pair{"/proc", true}, {"/proc/self", false}})
    EXPECT_EQ(fileStatus(currentFolder, path, FollowLink::Yes)->isMountRoot, expected) << path;
  EXPECT_FALSE(fileStatus(currentFolder, tree.path().c_str(), FollowLink::No)->isMountRoot);
}

class FileItemTest : public testing::Test {
protected:
  struct Made {
    FileKind kind;
    /// What a file holds or a link leads to.
    std::string content;
    Existence existence;
    std::uint32_t flags;
  };

  FileItemTest() {
    for (const auto &[name, item] : items)
      item.kind == FileKind::Regular  ? tree.file(name, item.content)
      : item.kind == FileKind::Folder ? tree.folder(name)
      : item.kind == FileKind::Link   ? tree.link(name, item.content)
                                      : tree.fifo(name);
  }

  TemporaryTree tree;
  const std::map<std::string, Made> items{
      {"file\xff", {FileKind::Regular, "", Existence::File, 0}},
      {"bookmark", {FileKind::Regular, "book\0\0\0\0mark and more"s, Existence::File, alias}},
      {"short bookmark", {FileKind::Regular, "book\0\0\0\0mar"s, Existence::File, 0}},
      {"folder", {FileKind::Folder, "", Existence::Folder, 0}},
      {"fifo", {FileKind::Other, "", Existence::File, 0}},
      {"link", {FileKind::Link, "bookmark", Existence::File, symlinkFlag}},
      {"link to folder", {FileKind::Link, "folder", Existence::Folder, symlinkFlag}},
      {"loop", {FileKind::Link, "loop", Existence::None, symlinkFlag}}};
};

TEST_F(FileItemTest, AnswersTheSameHoweverItIsNamed) {
  const auto expectAsMade = [&](FileItem &item) {
    const Made &made = items.at(std::string(item.name()));
    EXPECT_EQ(item.existence(), made.existence) << item.name();
    EXPECT_EQ(item.status().value().kind, made.kind) << item.name();
    EXPECT_EQ(LSCopyItemInfo(item), made.flags) << item.name();
    EXPECT_FALSE(item.isListedAsNoFolder() && made.kind == FileKind::Folder);
  };
  for (const auto &[name, made] : items) {
    const auto path = NSString::create(tree.path(name));
    FileItem item(*path);
    expectAsMade(item);
  }
  const auto mount = NSString::create("/proc");
  FileItem item(*mount);
  EXPECT_EQ(LSCopyItemInfo(item), kLSItemInfoIsVolume);
  forEachItem("/", [](FileItem &entry) {
    EXPECT_TRUE(entry.name() != "proc" || LSCopyItemInfo(entry) == kLSItemInfoIsVolume);
  });
  EXPECT_EQ(forEachItem(tree.path(), expectAsMade).size(), items.size());
  SystemCalls replaced{};
  replaced.listEntries = listWithoutKinds;
  const SystemCallsGuard calls(replaced);
  forEachItem(tree.path(), expectAsMade);
}

TEST(MountPointsTest, NamesOfTheTable) {
  const MountPoints mounts("36 35 98:0 / / rw - ext4 /dev/a rw\n"
                           "37 36 98:1 /sub /media/a\\040b\\134 rw,noatime master:1 - ext4 b rw\n"
                           "\nbroken\n38 36 0:5 / /dev/shm");
  for (const char *const name : {"/", "a b\\", "shm"})
    EXPECT_TRUE(mounts.haveName(name)) << name;
  for (const char *const name : {"media", "a", "dev", "sub"})
    EXPECT_FALSE(mounts.haveName(name)) << name;
}

TEST_F(FileItemTest, AsksTheSystemForNothingNeedless) {
  const SystemCallsGuard calls;
  forEachItem(tree.path(), [&](FileItem &item) { static_cast<void>(item.existence()); });
  EXPECT_LE(calls.counts().statusAt, 1 + 3) << "one probe, three links";
  EXPECT_LE(calls.counts().openAt, 2);
  forEachItem(tree.path(), [&](FileItem &item) {
    calls.resetCounts();
    static_cast<void>(item.status());
    static_cast<void>(LSCopyItemInfo(item));
    static_cast<void>(LSCopyItemInfo(item));
    EXPECT_EQ(calls.counts().statusAt, 1) << item.name();
    const bool isFile = items.at(std::string(item.name())).kind == FileKind::Regular;
    EXPECT_LE(calls.counts().openAt, isFile ? 2 : 0) << item.name();
  });
}

TEST_F(FileItemTest, OpensRegularFilesOnlyAndUnderAnyNumber) {
  // A folder may come into the place of a file after it has been listed.
  static bool isReplaced;
  const auto openPath = [](int folder, const char *path, int flags) {
    const bool isListing = std::string_view(path).ends_with("/.");
    return realSystemCalls().openAt(folder, isReplaced && !isListing ? "." : path, flags);
  };
  const SystemCallsGuard calls({.openAt = openPath});
  const auto expectZero = [this](FileItem &item) {
    if (items.at(std::string(item.name())).kind != FileKind::Regular)
      return;
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    EXPECT_EQ(item.openRegularFile().number(), isReplaced ? -1 : 0) << item.name();
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << item.name() << " is closed";
    dup2(input, STDIN_FILENO);
    close(input);
  };
  for (const bool isSo : {false, true}) {
    isReplaced = isSo;
    forEachItem(tree.path(), expectZero);
  }
}

TEST_F(FileItemTest, IsNotThereWhereItsFolderCannotBeEntered) {
  SystemCalls closed{};
  closed.openAt = [](int folder, const char *path, int flags) {
    return std::string_view(path).ends_with("/.") ? (errno = EACCES, -1)
                                                  : realSystemCalls().openAt(folder, path, flags);
  };
  closed.statusAt = [](int, const char *, int, struct statx *) { return errno = EACCES, -1; };
  const SystemCallsGuard calls(closed);
  const auto names = forEachItem(tree.path(), [&](FileItem &item) {
    EXPECT_EQ(item.existence(), Existence::None) << item.name();
    EXPECT_FALSE(item.status() || LSCopyItemInfo(item)) << item.name();
  });
  EXPECT_EQ(names.size(), items.size());
}

TEST(NSWorkspace, KnowsPackages) {
  TemporaryTree tree;
  const std::map<std::string, bool> folders{
      {"a.b.PrefPane", true}, {"a.apps", false},    {"app", false},       {".app", false},
      {"own.kind", true},     {"own.kind2", false}, {"own.kind3", false}, {".kind", false}};
  for (const auto &[name, isPackage] : folders)
    tree.folder(name);
  for (const char *const list : {"own.kind/Contents/Info.plist", "own.kind2/Info.plist",
                                 "own.kind3/contents/Info.plist", ".kind/Contents/Info.plist"})
    tree.file(list);
  forEachItem(tree.path(), [&](FileItem &item) {
    EXPECT_EQ(isFilePackage(item), folders.at(std::string(item.name()))) << item.name();
  });
}

} // namespace

} // namespace searchsystem
