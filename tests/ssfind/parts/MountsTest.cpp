#include "hosts/ssfind/Mounts.h"

#include <gtest/gtest.h>

namespace {

using namespace ssfind;

using Paths = std::vector<std::string>;

TEST(MountsTest, LinesOfTheTable) {
  const auto mounts =
      parseMountInfo("36 35 98:0 / / rw,noatime - ext4 /dev/sda1 rw\n"
                     "36 35 98:0 / /mnt rw,noatime\n"
                     "36 35 0:4 net:[1] - rw - nsfs nsfs rw\n"
                     "\n"
                     "36 35 98:0 /m /mnt rw shared:1 master:2 - fuse.sshfs a:/b rw\n"
                     R"(36 35 0:1 / /a\040b\011c\012d\134e\04 rw - tmpfs x rw)");
  Paths actual;
  for (const Mount &mount : mounts)
    actual.insert(actual.end(), {mount.path, mount.fileSystem});
  EXPECT_EQ(actual, (Paths{"/", "ext4", "/mnt", "fuse.sshfs", "/a b\tc\nd\\e\\04", "tmpfs"}));
}

TEST(MountsTest, ThoseBelowAFolder) {
  const std::vector<Mount> mounts{
      {"/", "ext4"},           {"/home/usb/inner", "vfat"}, {"/home", "xfs"},
      {"/home/usb", "vfat"},   {"/home/usb", "exfat"},      {"/home/.cache/x", "tmpfs"},
      {"/homework", "ext4"},   {"/proc", "proc"},           {"/proc/sys/fs", "autofs"},
      {"/home/usb-2", "vfat"}, {"/dev", "devtmpfs"},        {"/dev/shm", "tmpfs"},
      {"/.snapshots", "ext4"},
  };
  EXPECT_EQ(mountsBelow("/", mounts),
            (Paths{"/home", "/home/usb", "/home/usb/inner", "/home/usb-2", "/homework"}));
  EXPECT_EQ(mountsBelow("/home", mounts), (Paths{"/home/usb", "/home/usb/inner", "/home/usb-2"}));
  EXPECT_EQ(mountsBelow("/home/.cache", mounts), (Paths{"/home/.cache/x"}));
  EXPECT_EQ(mountsBelow("/dev", mounts), (Paths{"/dev/shm"})) << "named by the user itself";
  EXPECT_EQ(mountsBelow("/home/usb/inner", mounts), Paths{});
}

} // namespace
