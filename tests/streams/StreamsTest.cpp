#include "streams/CFileStream.h"
#include "streams/CMemStream.h"
#include "testing/TemporaryTree.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <utility>

namespace searchsystem {

namespace {

TEST(Streams, SeekByKindModeAndWithinLimits) {
  const struct {
    char kind; // of a file, of memory, attached
    unsigned short mode;
    long offset;
    unsigned short origin;
    int result;
    long position; // before: 40 of 100
  } rows[] = {
      {'f', 1, 10, 2, 1, 10},       {'f', 1, 10, 3, 1, 10},       {'f', 1, 150, 1, 1, 150},
      {'f', 1, -1, 3, 0, 40},       {'f', 1, 10, 4, 0, 40},       {'f', 3, 10, 0, 0, 40},
      {'f', 3, LONG_MAX, 2, 0, 40}, {'f', 3, LONG_MIN, 2, 0, 40}, {'f', 3, LONG_MAX - 40, 2, 0, 40},
      {'f', 3, LONG_MAX, 3, 0, 40}, {'m', 3, 100, 1, 1, 100},     {'m', 3, INT_MAX, 1, 0, 40},
      {'m', 3, INT_MAX, 2, 0, 40},  {'m', 3, INT_MAX, 3, 0, 40},  {'m', 3, LONG_MAX, 2, 0, 40},
      {'m', 3, INT_MIN, 3, 0, 40},  {'m', 3, 10, 4, 0, 40},       {'m', 1, 100, 1, 1, 100},
      {'m', 1, 101, 1, 0, 40},      {'m', 1, -10, 3, 1, 30},      {'m', 1, 61, 2, 0, 40},
      {'m', 1, -100, 2, 1, -60},    {'m', 1, LONG_MIN, 2, 0, 40}, {'a', 3, 101, 1, 0, 40},
      {'a', 3, -10, 3, 1, 30},      {'f', 3, 101, 1, 1, 101},     {'f', 3, 61, 2, 1, 101},
      {'f', 3, 1, 3, 1, 101},       {'m', 3, 101, 1, 1, 101}};
  TemporaryTree tree;
  for (const auto &row : rows) {
    const auto name = testing::Message() << row.kind << row.mode << row.offset << row.origin;
    unsigned char bytes[100] = {};
    CFileStream file;
    CMemStream memory;
    file.CreateFileStream(tree.file("a", std::string(100, 'a')).c_str(), 0, nullptr);
    ASSERT_EQ(memory.Open(2) + memory.Write(bytes, 100, nullptr), 2);
    ASSERT_TRUE(row.kind != 'a' || memory.Attach(bytes, 100) == 1);
    CIOStream &stream = row.kind == 'f' ? static_cast<CIOStream &>(file) : memory;
    ASSERT_EQ(stream.Open(row.mode) + stream.Seek(40, 1), 2);
    EXPECT_EQ(stream.Seek(row.offset, row.origin), row.result) << name;
    EXPECT_EQ(stream.Tell(), row.position) << name;
    EXPECT_EQ(stream.GetSize(), row.mode == 3 ? std::max(row.position, 100L) : 100) << name;
  }
}

/// What a stream that is open for writing has to hold and to answer, said plainly.
struct Model {
  bool isFile, canRead;
  std::string data = {};
  long position = 0;

  [[nodiscard]] long size() const { return static_cast<long>(data.size()); }

  std::string read(long count) {
    const long part = canRead ? std::clamp(size() - position, 0L, count) : 0;
    if (!isFile && (part == 0 || position < 0))
      return "0";
    const std::string bytes = data.substr(std::min(position, size()), part);
    position += part;
    return (part == count || !isFile ? "1" : "0") + bytes;
  }

  int write(const std::string &bytes) {
    if (bytes.empty() || position < 0)
      return bytes.empty() ? 1 : 0;
    const long end = position + static_cast<long>(bytes.size());
    data.resize(std::max(size(), end));
    data.replace(std::exchange(position, end), bytes.size(), bytes);
    return 1;
  }

  int seek(long offset, int origin) {
    const bool countsTwice = !isFile && origin == 3 && offset <= 0;
    const long target = offset + (origin == 1 ? 0 : origin == 2 ? position : size());
    if (isFile && target < 0)
      return 0;
    data.resize(std::max(size(), target));
    position = countsTwice ? target + offset : target;
    return 1;
  }
};

/// Does the same at random to a stream and to its model.
void drive(CIOStream &stream, Model model, unsigned seed) {
  std::mt19937 random(seed);
  const auto upTo = [&](long limit) { return static_cast<long>(random() % (limit + 1)); };
  for (int step = 0; step < 3000; ++step) {
    const auto where = testing::Message() << "seed " << seed << ", step " << step;
    const long count = upTo(5) == 0 ? upTo(9000) : upTo(60), kind = upTo(2);
    std::string bytes(count, static_cast<char>('a' + step % 26));
    long done = -1;
    if (kind == 0) {
      const int result = stream.Read(bytes.data(), count, &done);
      ASSERT_GE(done, 0) << where;
      ASSERT_EQ(std::to_string(result) + bytes.substr(0, done), model.read(count)) << where;
    } else if (kind == 1) {
      const int result = stream.Write(bytes.data(), count, &done);
      ASSERT_EQ(result, model.write(bytes)) << where;
      ASSERT_EQ(done, result == 1 ? count : 0) << where;
    } else {
      const int origin = static_cast<int>(1 + upTo(2));
      const long offset = origin == 1 ? upTo(model.size() + 100) - 50 : upTo(300) - 150;
      ASSERT_EQ(stream.Seek(offset, origin), model.seek(offset, origin)) << where << ": " << offset;
    }
    ASSERT_EQ(stream.Tell(), model.position) << where;
    // Asked every time, it would write out what a file's stream holds back.
    ASSERT_TRUE(upTo(3) != 0 || stream.GetSize() == model.size()) << where;
  }
  stream.Close();
  std::string all(model.data.size(), 0);
  ASSERT_EQ(stream.Open(1) + stream.Read(all.data(), model.size(), nullptr), 2);
  EXPECT_TRUE(all == model.data) << "seed " << seed;
}

TEST(Streams, HoldWhatWasWritten) {
  TemporaryTree tree;
  const long units[] = {1, 7, 64, 4096};
  for (unsigned seed = 0; seed < 12; ++seed) {
    const unsigned short mode = seed % 2 == 0 ? 3 : 2;
    CFileStream file;
    CMemStream memory;
    ASSERT_EQ(file.CreateFileStream(tree.file("a").c_str(), 0, nullptr), 1);
    ASSERT_EQ(memory.CreateMemStream(seed % 3 * 100, units[seed % 4], 0, nullptr), 1);
    ASSERT_EQ(file.Open(mode) + memory.Open(mode), 2);
    drive(file, Model{true, mode == 3}, seed);
    drive(memory, Model{false, mode == 3}, seed);
  }
}

TEST(CMemStream, WritesAnAttachedBufferInPlace) {
  std::string memory = "abcdef";
  auto *const start = reinterpret_cast<unsigned char *>(memory.data());
  char bytes[] = "123456789";
  long done = 0;
  CMemStream stream;
  EXPECT_EQ(stream.Attach(start, 0) + stream.Attach(start, -1) + stream.Attach(start, 1L << 31), 0);
  ASSERT_EQ(stream.Attach(start, 6) + stream.Open(3) + stream.Seek(4, 1), 3);
  EXPECT_EQ(stream.Write(bytes, 9, &done), 0);
  EXPECT_EQ(done, 2) << "what fits";
  EXPECT_EQ(stream.Write(bytes, LONG_MIN, &done) + done, 0);
  EXPECT_EQ(stream.ReMakeBuffer(7) + stream.Write(bytes, 3, nullptr), 2) << "now a copy that grows";
  EXPECT_STREQ(reinterpret_cast<char *>(stream.GetMemory()), "abcd12123");
  EXPECT_EQ(memory, "abcd12");
  EXPECT_EQ(stream.Attach(start, 6) + stream.Open(2), 2);
  EXPECT_EQ(memory, std::string(6, 0)) << "opened for writing alone";
  stream.ReleaseBuffer();
  EXPECT_EQ(stream.Write(bytes, 1, &done) + done, 0) << "still one that does not grow";
}

TEST(CMemStream, CutsAndGrowsInUnits) {
  const struct {
    long size; // of ten bytes in units of 4, position 10
    int result;
    long left;
  } rows[] = {{100, 1, 10},     {9, 1, 10},       {5, 1, 8},
              {0, 1, 0},        {-5, 1, 0},       {INT_MIN, 1, INT_MIN + 4},
              {INT_MAX, 0, 10}, {LONG_MAX, 0, 10}};
  char bytes[] = "0123456789";
  CMemStream stream;
  for (const auto &row : rows) {
    ASSERT_EQ(stream.CreateMemStream(12, 4, 0, nullptr) + stream.Open(3), 2);
    ASSERT_EQ(stream.Write(bytes, 10, nullptr), 1);
    EXPECT_EQ(stream.ReMakeBuffer(row.size), row.result) << row.size;
    EXPECT_EQ(stream.GetSize(), row.left) << row.size;
    EXPECT_EQ(stream.Tell(), row.left) << row.size;
    std::string left(bytes, std::max(row.left, 0L));
    left.resize(12);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(stream.GetMemory()), 12), left) << row.size;
  }
  EXPECT_EQ(stream.CreateMemStream(10, 0, 0, nullptr), 0) << "no unit";
  ASSERT_EQ(stream.CreateMemStream(0, -10, 0, nullptr) + stream.Open(3), 2);
  EXPECT_EQ(stream.Write(bytes, 9, nullptr) + stream.Seek(5, 1), 0) << "units round down";
}

} // namespace

} // namespace searchsystem
