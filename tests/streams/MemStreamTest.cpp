#include "streams/CMemStream.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

/// What the first bytes of a stream look like: zero as a dot.
std::string bytesOf(const CMemStream &stream, long count) {
  std::string text(reinterpret_cast<const char *>(stream.GetMemory()), count);
  for (char &byte : text)
    byte = byte == 0 ? '.' : byte;
  return text;
}

TEST(CMemStream, SeeksByModeAndOwner) {
  const struct {
    bool isAttached;
    unsigned short mode;
    long offset;
    unsigned short origin;
    int result;
    long position = 40; // from 40 of 100
  } rows[] = {{false, 3, -10, 1, 1, -10},
              {false, 3, -10, 3, 1, 80},
              {false, 3, INT_MAX, 1, 0},
              {false, 3, INT_MAX, 2, 0},
              {false, 3, INT_MAX, 3, 0},
              {false, 3, LONG_MAX, 2, 0},
              {false, 3, INT_MIN, 3, 0},
              {false, 3, 10, 4, 0},
              {false, 1, 100, 1, 1, 100},
              {false, 1, 101, 1, 0},
              {false, 1, -10, 3, 1, 30},
              {false, 1, 61, 2, 0},
              {false, 1, INT_MIN, 2, 1, INT_MIN + 40},
              {false, 1, LONG_MIN, 2, 0},
              {true, 3, 101, 1, 0},
              {true, 3, -10, 3, 1, 30}};
  for (const auto &row : rows) {
    const auto name = testing::Message() << row.mode << ": " << row.offset << ", " << row.origin;
    unsigned char memory[100] = {};
    long done = 0;
    CMemStream stream;
    ASSERT_EQ(stream.Open(2) + stream.Write(memory, 100, nullptr), 2);
    ASSERT_TRUE(!row.isAttached || stream.Attach(memory, 100) == 1);
    ASSERT_EQ(stream.Open(row.mode) + stream.Seek(40, 1), 2);
    EXPECT_EQ(stream.Seek(row.offset, row.origin), row.result) << name;
    EXPECT_EQ(stream.Tell(), row.position) << name;
    if (row.position < 0) {
      EXPECT_EQ(stream.Read(memory, 1, &done) + stream.Write(memory, 1, &done) + done, 0) << name;
    }
  }
}

TEST(CMemStream, WritesAnAttachedBufferInPlace) {
  unsigned char memory[6] = {'a', 'b', 'c', 'd', 'e', 'f'};
  char bytes[] = "123456789";
  long done = 0;
  CMemStream stream;
  EXPECT_EQ(stream.Attach(memory, 0) + stream.Attach(memory, -1) + stream.Attach(memory, 1L << 31),
            0);
  ASSERT_EQ(stream.Attach(memory, 6), 1);
  ASSERT_EQ(stream.Open(3) + stream.Seek(4, 1), 2);
  EXPECT_EQ(stream.Write(bytes, 9, &done), 0);
  EXPECT_EQ(done, 2) << "what fits";
  EXPECT_EQ(stream.Write(bytes, LONG_MIN, &done) + done, 0);
  EXPECT_EQ(stream.ReMakeBuffer(7) + stream.Write(bytes, 3, nullptr), 2) << "now a copy that grows";
  EXPECT_EQ(bytesOf(stream, 11), "abcd12123..");
  stream.Attach(memory, 6);
  stream.Open(2);
  EXPECT_EQ(bytesOf(stream, 6), "......") << "opened for writing alone";
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
    ASSERT_EQ(stream.CreateMemStream(12, 4, 0, nullptr), 1);
    ASSERT_EQ(stream.Open(3) + stream.Write(bytes, 10, nullptr), 2);
    EXPECT_EQ(stream.ReMakeBuffer(row.size), row.result) << row.size;
    EXPECT_EQ(stream.GetSize(), row.left) << row.size;
    EXPECT_EQ(stream.Tell(), row.left) << row.size;
    const long kept = row.left < 0 ? 0 : row.left;
    EXPECT_EQ(bytesOf(stream, 12), std::string(bytes, kept) + std::string(12 - kept, '.'));
  }
  EXPECT_EQ(stream.CreateMemStream(10, 0, 0, nullptr), 0) << "no unit";
  ASSERT_EQ(stream.CreateMemStream(0, -10, 0, nullptr) + stream.Open(3), 2);
  EXPECT_EQ(stream.Write(bytes, 9, nullptr) + stream.Seek(5, 1), 0) << "units round down";
}

} // namespace
