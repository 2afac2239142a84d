#include "hosts/ssfind/Mounts.h"

#include <gtest/gtest.h>

namespace searchsystem {

namespace {

using namespace ssfind;

using Paths = std::vector<std::string>;

TEST(MountsTest, LinesOfTheTable) {
  std::string text = "/dev/sda1 / ext4 rw,noatime 0 0\n"
                     "/dev/sda2 /mnt\n"
                     "nsfs net:[1] nsfs rw 0 0\n"
                     "\n"
                     " /empty tmpfs rw 0 0\n"
                     "a:/b /mnt fuse.sshfs rw 0 0\n"
                     R"(x /a\040b\011c\012d\134e\04 tmpfs rw,)" +
                     std::string(100'000, 'o') + " 0 0\nx /end xfs rw 0 0";
  std::FILE *const table = fmemopen(text.data(), text.size(), "r");
  const std::vector<Mount> mounts = mountsOf(table);
  std::fclose(table);
  Paths actual;
  for (const Mount &mount : mounts)
    actual.insert(actual.end(), {mount.path, mount.fileSystem});
  EXPECT_EQ(actual, (Paths{"/", "ext4", "/empty", "tmpfs", "/mnt", "fuse.sshfs",
                           "/a b\tc\nd\\e\\04", "tmpfs", "/end", "xfs"}));
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

} // namespace searchsystem
