#include "hosts/ssfind/Mounts.h"

#include <gtest/gtest.h>

namespace ssfind {
namespace {

using Paths = std::vector<std::string>;

TEST(MountsTest, LinesOfTheTable) {
  const struct {
    const char *name;
    std::string line;
    const char *path;
    const char *fileSystem;
  } rows[] = {
      {"no tags", "36 35 98:0 / /mnt rw,noatime - ext4 /dev/sda1 rw", "/mnt", "ext4"},
      {"tags", "36 35 98:0 /m /mnt rw shared:1 master:2 - fuse.sshfs a:/b rw", "/mnt",
       "fuse.sshfs"},
      {"escapes", R"(36 35 0:1 / /a\040b\011c\012d\134e rw - tmpfs x rw)", "/a b\tc\nd\\e",
       "tmpfs"},
      {"no escape", R"(36 35 0:1 / /a\04 rw - tmpfs x rw)", "/a\\04", "tmpfs"},
      {"cut off", "36 35 98:0 / /mnt rw,noatime", nullptr, nullptr},
      {"no path", "36 35 0:4 net:[1] - rw - nsfs nsfs rw", nullptr, nullptr},
      {"empty", "", nullptr, nullptr},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    // The lines around it must not suffer.
    const auto mounts = parseMountInfo("1 0 0:2 / / rw - btrfs x rw\n" + row.line +
                                       "\n2 0 0:3 / /last rw - xfs x rw");
    ASSERT_EQ(mounts.size(), row.path != nullptr ? 3U : 2U);
    EXPECT_EQ(mounts.front().path, "/");
    EXPECT_EQ(mounts.back().path, "/last");
    if (row.path != nullptr) {
      EXPECT_EQ(mounts[1].path, row.path);
      EXPECT_EQ(mounts[1].fileSystem, row.fileSystem);
    }
  }
}

TEST(MountsTest, ThoseBelowAFolder) {
  const std::vector<Mount> mounts{
      {"/", "ext4"},           {"/home/usb/inner", "vfat"}, {"/home", "xfs"},
      {"/home/usb", "vfat"},   {"/home/usb", "exfat"},      {"/home/.cache/x", "tmpfs"},
      {"/homework", "ext4"},   {"/proc", "proc"},           {"/proc/sys/fs", "autofs"},
      {"/home/usb-2", "vfat"}, {"/dev", "devtmpfs"},        {"/dev/shm", "tmpfs"},
  };
  EXPECT_EQ(mountsBelow("/", mounts),
            (Paths{"/home", "/home/usb", "/home/usb/inner", "/home/usb-2", "/homework"}));
  EXPECT_EQ(mountsBelow("/home", mounts), (Paths{"/home/usb", "/home/usb/inner", "/home/usb-2"}));
  EXPECT_EQ(mountsBelow("/home/.cache", mounts), (Paths{"/home/.cache/x"}));
  EXPECT_EQ(mountsBelow("/dev", mounts), (Paths{"/dev/shm"})) << "named by the user itself";
  EXPECT_EQ(mountsBelow("/home/usb/inner", mounts), Paths{});
}

} // namespace
} // namespace ssfind
