#include "streams/CFileStream.h"
#include "testing/TemporaryTree.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace searchsystem {

namespace {

class FileStreamTest : public testing::Test {
protected:
  /// Names `path` and opens it; what `Open` answers.
  int open(const std::string &path, unsigned short mode) {
    return stream.CreateFileStream(path.c_str(), 0, nullptr) == 1 ? stream.Open(mode) : -1;
  }

  std::string read(long count) {
    std::string text(static_cast<std::size_t>(count), '-');
    long done = -1;
    const int result = stream.Read(text.data(), count, &done);
    return text.substr(0, static_cast<std::size_t>(done)) + (result == 1 ? "" : "|");
  }

  TemporaryTree tree;
  CFileStream stream;
};

TEST_F(FileStreamTest, OpensWhatItsModeAllows) {
  const std::string file = tree.file("a", "abc"), missing = tree.path("missing");
  const std::string pipe = tree.fifo("pipe");
  const struct {
    std::string path;
    unsigned short mode;
    int result;
  } rows[] = {{file, 1, 1},        {file, 5, 1},    {file, 3, 1},    {file, 0, 0},
              {file, 4, 0},        {missing, 1, 0}, {missing, 3, 0}, {tree.path("made"), 2, 1},
              {tree.path(), 1, 0}, {pipe, 1, 0},    {pipe, 3, 0},    {"/dev/zero", 1, 0},
              {"/dev/full", 2, 1}, {"", 1, -1}};
  for (const auto &row : rows) {
    EXPECT_EQ(open(row.path, row.mode), row.result) << row.path << row.mode;
    EXPECT_EQ(stream.Close(), row.result == 1 ? 1 : 0) << row.path << row.mode;
    EXPECT_EQ(stream.GetSize() + stream.Tell() + stream.Seek(0, 1), 0) << row.path << row.mode;
  }
  EXPECT_EQ(stream.Open(1), 0) << "a path that was refused leaves none";
}

TEST_F(FileStreamTest, TellsHowMuchOfAReadOrWriteWasDone) {
  ASSERT_EQ(open(tree.file("a", "abcde"), 1), 1);
  EXPECT_EQ(read(8), "abcde|");
  long done = 9;
  EXPECT_EQ(stream.Read(nullptr, 1, &done) + done, 0);
  char bytes[9] = "12345678";
  std::ofstream(tree.path("a"), std::ios::app) << "more";
  EXPECT_EQ(stream.GetSize(), 9);
  EXPECT_EQ(read(4), "more") << "a file that has grown is read on";
  EXPECT_EQ(stream.Read(bytes, -1, nullptr) + stream.Write(bytes, 1, nullptr), 0);

  ASSERT_EQ(open("/dev/full", 2), 1);
  std::vector<char> large(1 << 20);
  EXPECT_EQ(stream.Write(large.data(), 1 << 20, nullptr), 0);
  EXPECT_EQ(stream.Seek(1 << 20, 1), 0) << "cannot be extended";

  // Beyond what 32 bits count.
  constexpr long end = 5L << 30;
  std::filesystem::resize_file(tree.file("large"), end);
  ASSERT_EQ(open(tree.path("large"), 3) + stream.Seek(end, 1) + stream.Write(bytes, 4, nullptr), 3);
  EXPECT_EQ(stream.GetSize(), end + 4) << "with what was just written";
  ASSERT_EQ(stream.Open(1) + stream.Seek(end - 1, 1), 2);
  EXPECT_EQ(read(8), std::string("\0001234|", 6));
  EXPECT_EQ(stream.Tell(), end + 4);
}

/// Lets no file grow beyond this size in bytes, as a full disk does.
class Limit {
public:
  explicit Limit(rlim_t size) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{size, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~Limit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  Limit(const Limit &) = delete;
  Limit &operator=(const Limit &) = delete;

private:
  void (*const handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
  rlimit before_{};
};

TEST_F(FileStreamTest, GrowsWhereThereIsRoomAndNeverShrinks) {
  constexpr long size = 100'000;
  const std::string path = tree.file("a", std::string(size, 'a'));
  const auto sizeNow = [&] { return static_cast<long>(std::filesystem::file_size(path)); };
  char bytes[] = "more";
  {
    ASSERT_EQ(open(path, 3) + stream.Seek(0, 3) + stream.Write(bytes, 4, nullptr), 3);
    const Limit limit(size);
    EXPECT_EQ(stream.Seek(1000, 1), 0) << "what was written cannot be brought to the file";
    EXPECT_EQ(sizeNow(), size);
    ASSERT_EQ(stream.Open(3) + stream.Seek(10, 1), 2);
    EXPECT_EQ(stream.Seek(size + 1, 1), 0);
    EXPECT_EQ(stream.Tell(), 10);
    EXPECT_EQ(sizeNow(), size);
  }
  constexpr long more = 1 << 20;
  ASSERT_EQ(stream.Seek(size + more, 1), 1);
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_size, size + more);
  EXPECT_GE(status.st_blocks * 512, size + more) << "the zeros take room";

  struct Told : CFileStream {
    long GetSize() override { return 4; }
  } told;
  ASSERT_EQ(told.CreateFileStream(tree.file("b", "0123456789").c_str(), 0, nullptr), 1);
  ASSERT_EQ(told.Open(3) + told.Seek(6, 1), 2);
  EXPECT_EQ(told.Tell(), 12);
  ASSERT_EQ(open(tree.path("b"), 1), 1);
  EXPECT_EQ(read(13), "0123456789" + std::string(2, 0) + "|");
}

TEST(FileFunctions, WriteZerosWhereTheSystemReservesNone) {
  static std::string written;
  static std::size_t room;
  const auto write = [](void *, const char *bytes, std::size_t count) -> ssize_t {
    if (written.size() + count > room)
      return errno = ENOSPC, 0;
    written.append(bytes, count);
    return static_cast<ssize_t>(count);
  };
  const auto seek = [](void *, off64_t *offset, int) -> int { return *offset = 0; };
  for (const bool hasRoom : {true, false}) {
    written.clear();
    room = hasRoom ? 10'000 : 9'999;
    const CFilePointer file(fopencookie(nullptr, "wb", {{}, write, seek, {}}));
    EXPECT_EQ(appendZeros(file.get(), 10'000), hasRoom);
    EXPECT_EQ(written == std::string(10'000, 0), hasRoom);
  }
}

TEST_F(FileStreamTest, KeepsWhatItReadAheadThroughSeeks) {
  const auto bytesRead = [] {
    std::ifstream counters("/proc/self/io");
    std::string label;
    long count = -1;
    counters >> label >> count;
    return count;
  };
  constexpr long size = 1 << 20, part = 16;
  for (const unsigned short mode : {1, 3}) {
    ASSERT_EQ(open(tree.file("a", std::string(size, 'a')), mode), 1);
    const long before = bytesRead();
    for (long position = 0; position < size; position += part) {
      ASSERT_TRUE(stream.Seek(position, 1) == 1 && stream.GetSize() == size);
      ASSERT_EQ(read(part).size(), static_cast<std::size_t>(part));
    }
    EXPECT_LT(bytesRead() - before, 2 * size) << mode;
  }
}

TEST(CIOStream, ReportsProgressByItsMode) {
  static std::string calls;
  const auto callback = [](unsigned char percent) {
    calls += std::to_string(percent) + " ";
    return percent != 42;
  };
  // The answers to 0, 42 and 100, and the calls; with a callback and without.
  constexpr struct {
    unsigned short mode;
    const char *with, *without;
  } rows[] = {
      {0, "111", "111"}, {1, "111100 ", "110"}, {2, "1010 42 100 ", "000"}, {3, "000", "000"}};
  for (const auto &row : rows)
    for (const bool hasCallback : {false, true}) {
      CFileStream stream;
      stream.CreateFileStream("unused", row.mode, hasCallback ? +callback : nullptr);
      std::string actual;
      calls.clear();
      for (const unsigned char percent : {0, 42, 100})
        actual += std::to_string(stream.Progress(percent));
      EXPECT_EQ(actual + calls, hasCallback ? row.with : row.without) << row.mode;
    }
}

TEST_F(FileStreamTest, HandlesReadRegularFilesOnly) {
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
  EXPECT_EQ(CloseHandle(handle) + CloseHandle(new FileHandle), 1) << "one holds no file";
}

TEST(FileFunctions, WalkAndCopyText) {
  const struct {
    const char *text;
    int current, before; // -1: none
  } rows[] = {{"abc", 0, -1},
              {"abc", 2, 1},
              {"a\x83\x41z", 2, 1},
              {"a\x83\x41z", 4, 3},
              {"\x83\x83\x83\x83", 4, 2},
              {"\xb1\xdf\xa0\xfd", 4, 3},
              {"a\x83", 2, 1},
              {"", 1, 0},
              {"ab\0cd", 5, 1}};
  for (const auto &[text, current, expected] : rows) {
    const char *const before = _tcsdec(text, text + current);
    EXPECT_EQ(before == nullptr ? -1 : before - text, expected) << text << current;
  }
  const char *const copies[] = {"-----", "a----", "ab---", "abc--", "abc", "abc"};
  for (int n = 0; n < 6; ++n) {
    char buffer[] = "-----";
    EXPECT_STREQ(lstrcpyn(buffer, "abc", n), copies[n]) << n;
  }
}

TEST(FileFunctions, SignalsDoNotCutAReadShort) {
  static int calls;
  const auto readByteOrBeInterrupted = [](void *, char *buffer, std::size_t) -> ssize_t {
    if (++calls % 2 != 0)
      return errno = EINTR, -1;
    *buffer = "-abc"[calls / 2 % 4];
    return calls / 2 < 4 ? 1 : 0;
  };
  const CFilePointer file(fopencookie(nullptr, "rb", {readByteOrBeInterrupted, {}, {}, {}}));
  char bytes[] = "-----";
  EXPECT_EQ(readFile(file.get(), bytes, 2) + readFile(file.get(), bytes + 2, 3), 3U);
  EXPECT_STREQ(bytes, "abc--");
}

} // namespace

} // namespace searchsystem
