#include "streams/CFileStream.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

#include <climits>
#include <fstream>
#include <string>
#include <vector>

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
    text.resize(static_cast<std::size_t>(done));
    return text + (result == 1 ? "" : "|");
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

TEST_F(FileStreamTest, SeeksByItsMode) {
  const struct {
    unsigned short mode;
    long offset;
    unsigned short origin;
    int result;
    long position; // from 40
    long size = 100;
  } rows[] = {{1, 10, 2, 1, 10},
              {1, 10, 3, 1, 10},
              {1, 150, 1, 1, 150},
              {1, -1, 3, 0, 40},
              {1, 10, 4, 0, 40},
              {3, 150, 1, 1, 150, 150},
              {3, -41, 2, 0, 40},
              {3, 70, 2, 1, 110, 110},
              {3, LONG_MAX, 2, 0, 40},
              {3, LONG_MIN, 2, 0, 40},
              {3, LONG_MAX - 40, 2, 0, 40},
              {3, -10, 3, 1, 90},
              {3, 30, 3, 1, 130, 130},
              {3, LONG_MAX, 3, 0, 40},
              {3, 10, 0, 0, 40}};
  for (const auto &row : rows) {
    const auto name = testing::Message() << row.mode << ": " << row.offset << ", " << row.origin;
    ASSERT_EQ(open(tree.file("a", std::string(100, 'a')), row.mode), 1) << name;
    ASSERT_EQ(stream.Seek(40, 1), 1);
    EXPECT_EQ(stream.Seek(row.offset, row.origin), row.result) << name;
    EXPECT_EQ(stream.Tell(), row.position) << name;
    EXPECT_EQ(stream.GetSize(), row.size) << name;
  }
}

TEST_F(FileStreamTest, TellsHowMuchOfAReadOrWriteWasDone) {
  ASSERT_EQ(open(tree.file("a", "abcde"), 1), 1);
  EXPECT_EQ(read(8), "abcde|");
  long done = 9;
  EXPECT_EQ(stream.Read(nullptr, 1, &done), 0);
  EXPECT_EQ(done, 0);
  char bytes[9] = "12345678";
  EXPECT_EQ(stream.Read(bytes, -1, nullptr) + stream.Write(bytes, 1, nullptr), 0);
  std::ofstream(tree.path("a"), std::ios::app) << "more";
  EXPECT_EQ(stream.GetSize(), 9);
  EXPECT_EQ(read(4), "more") << "a file that has grown is read on";

  ASSERT_EQ(open("/dev/full", 2), 1);
  std::vector<char> large(1 << 20);
  EXPECT_EQ(stream.Write(large.data(), 1 << 20, nullptr), 0);
  EXPECT_EQ(stream.Seek(1 << 20, 1), 0) << "cannot be extended";

  ASSERT_EQ(open(tree.file("b", "abcde"), 3), 1);
  EXPECT_EQ(read(2), "ab");
  EXPECT_EQ(stream.Write(bytes, 2, nullptr), 1);
  EXPECT_EQ(read(9), "e|") << "reading and writing in turn, without a seek";
}

TEST_F(FileStreamTest, ReadsBeyondTwoGigabytes) {
  constexpr long end = 5L << 30;
  ASSERT_EQ(open(tree.path("large"), 2), 1);
  ASSERT_EQ(stream.Seek(end, 1), 1);
  char tail[] = "tail";
  ASSERT_EQ(stream.Write(tail, 4, nullptr), 1);
  EXPECT_EQ(stream.GetSize(), end + 4) << "with what was just written";
  ASSERT_EQ(stream.Open(1), 1);
  EXPECT_EQ(stream.GetSize(), end + 4);
  ASSERT_EQ(stream.Seek(end - 1, 1), 1);
  EXPECT_EQ(read(8), std::string("\0tail|", 6));
  EXPECT_EQ(stream.Tell(), end + 4);
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
      ASSERT_EQ(stream.Seek(position, 1), 1);
      ASSERT_EQ(stream.GetSize(), size);
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
  const std::string answers[] = {"111", "111100 ", "1010 42 100 ", "000"},
                    without[] = {"111", "110", "000", "000"}; // to 0, 42, 100
  for (unsigned short mode = 0; mode < 4; ++mode) {
    for (const bool hasCallback : {true, false}) {
      CFileStream stream;
      stream.CreateFileStream("unused", mode, hasCallback ? +callback : nullptr);
      calls.clear();
      std::string actual;
      for (const unsigned char percent : {0, 42, 100})
        actual += std::to_string(stream.Progress(percent));
      EXPECT_EQ(actual + calls, (hasCallback ? answers : without)[mode]) << mode;
    }
  }
}

} // namespace
