#include "streams/FileFunctions.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

TEST(FileFunctions, ReadRegularFilesOnly) {
  TemporaryTree tree;
  const std::string path = tree.file("file", "0123456789");
  EXPECT_EQ(CreateFile(path.c_str(), fileAccessWrite, 0, nullptr), nullptr);
  EXPECT_EQ(CreateFile(path.c_str(), 0xc0000000, 0, nullptr), nullptr);
  EXPECT_EQ(CreateFile(tree.fifo("pipe").c_str(), fileAccessRead), nullptr);
  FileHandle *const handle = CreateFile(path.c_str(), fileAccessRead);
  char buffer[16] = {};
  unsigned long done = 77;
  EXPECT_EQ(FS_GetFileSize(handle, nullptr), 10U);
  EXPECT_EQ(ReadFile(handle, buffer, 4, &done, nullptr), 1);
  EXPECT_EQ(ReadFile(handle, buffer + 4, 4, &done, nullptr), 1);
  EXPECT_STREQ(buffer, "01234567");
  EXPECT_EQ(ReadFile(handle, buffer, 4, &done, nullptr), 0) << "two are left";
  EXPECT_EQ(done, 77U) << "is never told";
  EXPECT_EQ(CloseHandle(handle), 1);
  EXPECT_EQ(CloseHandle(new FileHandle), 0) << "holds no file";
}

TEST(FileFunctions, WalkAndCopyText) {
  const struct {
    std::string text;
    int current, before; // -1: none
  } rows[] = {{"abc", 0, -1},
              {"abc", 2, 1},
              {"a\x83\x41z", 2, 1},
              {"a\x83\x41z", 4, 3},
              {"\x83\x83\x83\x83", 4, 2},
              {"\xb1\xdf\xa0\xfd", 4, 3},
              {"a\x83", 2, 1},
              {"", 1, 0},
              {std::string("ab\0cd", 5), 5, 1}};
  for (const auto &row : rows) {
    const char *const start = row.text.c_str(), *const before = _tcsdec(start, start + row.current);
    EXPECT_EQ(before == nullptr ? -1 : before - start, row.before) << row.text << row.current;
  }
  const char *const copies[] = {"-----", "a----", "ab---", "abc--", "abc", "abc"};
  for (int n = 0; n < 6; ++n) {
    char buffer[] = "-----";
    EXPECT_STREQ(lstrcpyn(buffer, "abc", n), copies[n]) << n;
  }
}
