#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/LaunchServices.h"
#include "platform/foundation/NSWorkspace.h"
#include "tests/support/SystemCallsGuard.h"
#include "tests/support/TemporaryTree.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>

namespace {

using namespace std::string_literals;
using Existence = FileItem::Existence;

constexpr std::uint32_t alias = kLSItemInfoIsAliasFile;
constexpr std::uint32_t symlinkFlag = kLSItemInfoIsSymlink;
constexpr std::uint32_t volume = kLSItemInfoIsVolume;
const std::string bookmark = "book\0\0\0\0mark and more"s;

/// Calls `look` with each item of a folder, as its listing names it.
void forEachItem(const std::string &folder, const std::function<void(FileItem &)> &look) {
  auto listing = DirectoryListing::open(folder);
  ASSERT_TRUE(listing) << folder;
  while (const auto entry = listing->next()) {
    FileItem item(*listing, *entry);
    look(item);
  }
}

std::set<std::string> namesIn(const std::string &folder) {
  std::set<std::string> names;
  forEachItem(folder, [&](FileItem &item) {
    EXPECT_TRUE(names.emplace(item.name()).second) << item.name();
  });
  return names;
}

/// Lets a listing know nothing of the kinds of its entries, as some file systems do.
ssize_t listWithoutKinds(int folder, void *buffer, std::size_t size) {
  const ssize_t filled = realSystemCalls().listEntries(folder, buffer, size);
  for (ssize_t at = 0; at < filled;) {
    auto *const entry = reinterpret_cast<dirent64 *>(static_cast<char *>(buffer) + at);
    entry->d_type = DT_UNKNOWN;
    at += entry->d_reclen;
  }
  return filled;
}

/// Lets a kernel not tell which folders are mount points.
int statusWithoutMounts(int folder, const char *path, int flags, struct statx *status) {
  const int result = realSystemCalls().statusAt(folder, path, flags, status);
  status->stx_attributes_mask &= ~static_cast<std::uint64_t>(STATX_ATTR_MOUNT_ROOT);
  return result;
}

TEST(DirectoryListing, TellsEveryNameOnce) {
  TemporaryTree tree;
  std::set<std::string> names{"caf\xe9", ".hidden", "a b\n", "...", std::string(255, 'n')};
  for (int i = 0; i < 700; ++i)
    names.insert("a name that takes more than one call to list " + std::to_string(i));
  for (const std::string &name : names)
    tree.file(name);
  EXPECT_EQ(namesIn(tree.path()), names);
  EXPECT_EQ(namesIn(tree.path() + "//"), names);
  EXPECT_EQ(namesIn(tree.folder("empty")), std::set<std::string>());
  SystemCalls failing{};
  failing.listEntries = [](int, void *, std::size_t) -> ssize_t { return errno = EIO, -1; };
  const SystemCallsGuard calls(failing);
  EXPECT_EQ(namesIn(tree.path()), std::set<std::string>()) << "a listing that breaks off ends";
}

TEST(DirectoryListing, IsHadOfFoldersOnly) {
  TemporaryTree tree;
  EXPECT_TRUE(DirectoryListing::open(tree.link("link", tree.folder("folder"))));
  for (const std::string &path :
       {tree.file("file"), tree.path("file/x"), tree.fifo("fifo"), tree.link("dead", "nowhere"),
        tree.path("missing"), tree.path(std::string(5000, 'x')), ""s})
    EXPECT_FALSE(DirectoryListing::open(path)) << path;
  const auto listing = DirectoryListing::open(tree.path());
  EXPECT_NE(fcntl(listing->descriptor(), F_GETFD) & FD_CLOEXEC, 0);
}

/// An item of a tree, and what it is.
struct Item {
  FileKind kind;
  /// What a file holds or a link leads to.
  std::string content;
  Existence existence;
  std::uint32_t flags;
};
const std::map<std::string, Item> items{
    {"file\xff", {FileKind::Regular, "", Existence::File, 0}},
    {"bookmark", {FileKind::Regular, bookmark, Existence::File, alias}},
    {"short bookmark", {FileKind::Regular, bookmark.substr(0, 11), Existence::File, 0}},
    {"no bookmark", {FileKind::Regular, "book\0\0\0\0murk"s, Existence::File, 0}},
    {"folder", {FileKind::Folder, "", Existence::Folder, 0}},
    {"fifo", {FileKind::Other, "", Existence::File, 0}},
    {"link", {FileKind::Link, "bookmark", Existence::File, symlinkFlag}},
    {"link to folder", {FileKind::Link, "folder", Existence::Folder, symlinkFlag}},
    {"dead link", {FileKind::Link, "nowhere", Existence::None, symlinkFlag}},
    {"loop", {FileKind::Link, "loop", Existence::None, symlinkFlag}}};

void makeItems(TemporaryTree &tree) {
  for (const auto &[name, item] : items)
    if (item.kind == FileKind::Regular)
      tree.file(name, item.content);
    else if (item.kind == FileKind::Folder)
      tree.folder(name);
    else if (item.kind == FileKind::Link)
      tree.link(name, item.content);
    else
      tree.fifo(name);
}

void expectAsMade(FileItem &item) {
  SCOPED_TRACE(item.name());
  const Item &made = items.at(std::string(item.name()));
  EXPECT_EQ(item.existence(), made.existence);
  ASSERT_TRUE(item.status());
  EXPECT_EQ(item.status()->kind, made.kind);
  EXPECT_EQ(LSCopyItemInfo(item), made.flags);
  EXPECT_FALSE(item.isListedAsNoFolder() && made.kind == FileKind::Folder);
}

TEST(FileItem, AnswersTheSameHoweverItIsNamed) {
  TemporaryTree tree;
  makeItems(tree);
  for (const auto &[name, made] : items) {
    const auto path = NSString::create(tree.path(name));
    FileItem item(*path);
    expectAsMade(item);
  }
  forEachItem(tree.path(), expectAsMade);
  SystemCalls replaced{};
  replaced.listEntries = listWithoutKinds;
  const SystemCallsGuard calls(replaced);
  forEachItem(tree.path(), expectAsMade);
}

TEST(FileItem, AsksTheSystemForNothingNeedless) {
  TemporaryTree tree;
  makeItems(tree);
  const SystemCallsGuard calls;
  forEachItem(tree.path(), [&](FileItem &item) { static_cast<void>(item.existence()); });
  EXPECT_LE(calls.counts().statusAt, 1 + 1 + 4) << "one probe, one folder, four links";
  EXPECT_LE(calls.counts().openAt, 2);
  forEachItem(tree.path(), [&](FileItem &item) {
    calls.resetCounts();
    static_cast<void>(item.status());
    static_cast<void>(LSCopyItemInfo(item));
    static_cast<void>(LSCopyItemInfo(item));
    EXPECT_EQ(calls.counts().statusAt, 1) << item.name();
    if (items.at(std::string(item.name())).kind != FileKind::Regular) {
      EXPECT_EQ(calls.counts().openAt, 0) << item.name();
    }
  });
}

TEST(FileItem, HasNoEntriesInAFolderThatCannotBeEntered) {
  TemporaryTree tree;
  makeItems(tree);
  SystemCalls closed{};
  closed.openAt = [](int folder, const char *path, int flags) {
    return std::string_view(path).ends_with("/.") ? (errno = EACCES, -1)
                                                  : realSystemCalls().openAt(folder, path, flags);
  };
  closed.statusAt = [](int, const char *, int, struct statx *) { return errno = EACCES, -1; };
  for (const auto list : {realSystemCalls().listEntries, &listWithoutKinds}) {
    closed.listEntries = list;
    const SystemCallsGuard calls(closed);
    std::size_t count = 0;
    forEachItem(tree.path(), [&](FileItem &item) {
      ++count;
      EXPECT_EQ(item.existence(), Existence::None) << item.name();
      EXPECT_FALSE(item.status()) << item.name();
      EXPECT_FALSE(LSCopyItemInfo(item)) << item.name();
    });
    EXPECT_EQ(count, items.size());
  }
}

TEST(FileItem, ExistsAsFarAsTheSystemTakesItsPath) {
  TemporaryTree tree;
  std::string folder = "d";
  while (tree.path(folder).size() < 3900)
    folder += "/" + std::string(100, 'd');
  const std::size_t longestName = longestPath - tree.path(folder).size() - 1;
  for (const std::size_t length : {longestName, longestName + 1}) {
    tree.file(folder + "/" + std::string(length, 'n'));
    tree.folder(folder + "/" + std::string(length, 'f'));
  }
  EXPECT_EQ(namesIn(tree.path(folder)).size(), 4U);
  forEachItem(tree.path(folder), [&](FileItem &item) {
    const auto path = NSString::create(tree.path(folder) + "/" + std::string(item.name()));
    FileItem byPath(*path);
    EXPECT_EQ(byPath.existence() != Existence::None, item.name().size() == longestName);
    EXPECT_EQ(item.existence(), byPath.existence()) << item.name();
    EXPECT_EQ(item.status().has_value(), byPath.status().has_value()) << item.name();
  });
}

TEST(FileItem, HasADateOfItsOwn) {
  TemporaryTree tree;
  tree.link("link", tree.file("file", "four"));
  tree.setModified("file", 1'700'000'000, 123'456'789);
  tree.setModified("link", 86'400, 999'999'999);
  const auto status = [&](FollowLink follow) {
    return fileStatus(currentFolder, tree.path("link").c_str(), follow).value();
  };
  EXPECT_EQ(status(FollowLink::No).modificationTime, 86'400.999999 - 978'307'200);
  EXPECT_EQ(status(FollowLink::Yes).modificationTime, 721'692'800.123456);
  EXPECT_EQ(status(FollowLink::Yes).size, 4U);
}

TEST(LaunchServices, TellsTheRootsOfMountedFileSystems) {
  TemporaryTree tree;
  tree.link("link", "/proc");
  const struct {
    const char *name;
    std::string path;
    std::optional<std::uint32_t> flags;
  } rows[] = {
      {"root of one", "/proc", volume},
      {"inside it", "/proc/self/fd", 0},
      {"ordinary folder", tree.folder("folder"), 0},
      {"link to a root", tree.path("link"), symlinkFlag},
      {"vanished", tree.path("vanished"), std::nullopt},
      {"below a file", tree.file("file") + "/x", std::nullopt},
      {"no path", "", std::nullopt},
  };
  SystemCalls replaced{};
  for (const auto status : {realSystemCalls().statusAt, &statusWithoutMounts}) {
    replaced.statusAt = status;
    const SystemCallsGuard calls(replaced);
    for (const auto &row : rows) {
      const auto path = NSString::create(row.path);
      FileItem item(*path);
      EXPECT_EQ(LSCopyItemInfo(item), row.flags) << row.name;
    }
  }
}

TEST(NSWorkspace, KnowsPackages) {
  TemporaryTree tree;
  std::map<std::string, bool> folders{
      {"a.app", true},           {"a.b.PrefPane", true}, {"a.KEXT", true},     {"a.apps", false},
      {"a.photoslibrary", true}, {"app", false},         {".app", false},      {"a.app.", false},
      {"own.kind", true},        {"own.kind2", false},   {"own.kind3", false}, {".kind", false}};
  for (const auto &[name, isPackage] : folders)
    tree.folder(name);
  tree.file("own.kind/Contents/Info.plist");
  tree.file("own.kind2/Info.plist");
  tree.file("own.kind3/contents/Info.plist");
  tree.file(".kind/Contents/Info.plist");
  forEachItem(tree.path(), [&](FileItem &item) {
    const std::string name(item.name());
    EXPECT_EQ(isFilePackage(item), folders.at(name)) << name;
    const auto path = NSString::create(tree.path(name));
    EXPECT_EQ(isFilePackage(FileItem(*path)), folders.at(name)) << name;
  });
}

} // namespace
