#include "streams/FileFunctions.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

TEST(FileFunctions, ReadRegularFilesOnly) {
  TemporaryTree tree;
  const std::string path = tree.file("file", "0123456789");
  for (const std::uint32_t access : {fileAccessWrite, fileAccessRead | fileAccessWrite, 0U})
    EXPECT_EQ(CreateFile(path.c_str(), access, 0, nullptr), nullptr) << access;
  EXPECT_EQ(CreateFile(tree.fifo("pipe").c_str(), fileAccessRead), nullptr);

  FileHandle *const handle = CreateFile(path.c_str(), fileAccessRead);
  ASSERT_NE(handle, nullptr);
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
  EXPECT_EQ(CloseHandle(nullptr) + ReadFile(nullptr, buffer, 1, nullptr, nullptr), 0);
  EXPECT_EQ(FS_GetFileSize(nullptr), 0U);
}

TEST(FileFunctions, FindTheCharacterBefore) {
  const struct {
    std::string text;
    int current, before; // -1: none
  } rows[] = {{"abc", 0, -1},
              {"abc", 2, 1},
              {"a\x83\x41z", 2, 1},
              {"a\x83\x41z", 3, 1},
              {"a\x83\x41z", 4, 3},
              {"\x83\x83\x83\x83", 4, 2},
              {"\xb1\xdf\xe0\x80", 4, 2},
              {"\x80\xa0\xfd\xff", 4, 3},
              {"a\x83", 2, 1},
              {"", 1, 0},
              {std::string("ab\0cd", 5), 5, 1}};
  for (const auto &row : rows) {
    const char *const start = row.text.c_str();
    const char *const before = _tcsdec(start, start + row.current);
    EXPECT_EQ(before == nullptr ? -1 : before - start, row.before) << row.text << row.current;
  }
}

TEST(FileFunctions, CopyTheEndOnlyWhereItFits) {
  const struct {
    int n;
    const char *result;
  } rows[] = {{INT_MIN, "-----"}, {0, "-----"}, {2, "ab---"}, {3, "abc--"}, {4, "abc"}, {9, "abc"}};
  for (const auto &row : rows) {
    char buffer[] = "-----";
    EXPECT_EQ(lstrcpyn(buffer, "abc", row.n), buffer);
    EXPECT_STREQ(buffer, row.result) << row.n;
  }
}

} // namespace
