#include "streams/CMemStream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>

namespace {

/// What the bytes of a stream look like: zero as a dot.
std::string bytesOf(const CMemStream &stream, long count) {
  std::string text(reinterpret_cast<const char *>(stream.GetMemory()), count);
  for (char &byte : text)
    byte = byte == 0 ? '.' : byte;
  return text;
}

TEST(CMemStream, SeeksByModeAndOwner) {
  constexpr long intMax = INT_MAX;
  const struct {
    bool isAttached;
    unsigned short mode;
    long offset;
    unsigned short origin;
    int result;
    long position = 40; // from 40
    long size = 100;
  } rows[] = {{false, 3, 10, 1, 1, 10},
              {false, 3, -10, 1, 1, -10},
              {false, 3, 2000, 1, 1, 2000, 2000},
              {false, 3, 70, 2, 1, 110, 110},
              {false, 3, -50, 2, 1, -10},
              {false, 3, -10, 3, 1, 80},
              {false, 3, 0, 3, 1, 100},
              {false, 3, 10, 3, 1, 110, 110},
              {false, 3, -100, 3, 1, -100},
              {false, 3, intMax, 1, 0},
              {false, 3, intMax, 2, 0},
              {false, 3, intMax, 3, 0},
              {false, 3, LONG_MAX, 2, 0},
              {false, 3, LONG_MIN, 2, 0},
              {false, 3, INT_MIN, 3, 0},
              {false, 3, 10, 0, 0},
              {false, 3, 10, 4, 0},
              {false, 1, 100, 1, 1, 100},
              {false, 1, 101, 1, 0},
              {false, 1, -10, 3, 1, 30},
              {false, 1, 60, 3, 1, 100},
              {false, 1, 61, 2, 0},
              {false, 1, INT_MIN, 1, 1, INT_MIN},
              {false, 1, 10, 4, 0},
              {true, 3, 101, 1, 0},
              {true, 3, -10, 3, 1, 30}};
  for (const auto &row : rows) {
    const auto name = testing::Message()
                      << row.isAttached << row.mode << ": " << row.offset << ", " << row.origin;
    unsigned char memory[100];
    CMemStream stream;
    if (row.isAttached) {
      ASSERT_EQ(stream.Attach(memory, 100), 1);
    } else {
      ASSERT_EQ(stream.CreateMemStream(0, 64, 0, nullptr), 1);
      stream.Open(2);
      ASSERT_EQ(stream.Write(memory, 100, nullptr), 1);
    }
    stream.Open(row.mode);
    ASSERT_EQ(stream.Seek(40, 1), 1);
    EXPECT_EQ(stream.Seek(row.offset, row.origin), row.result) << name;
    EXPECT_EQ(stream.Tell(), row.position) << name;
    EXPECT_EQ(stream.GetSize(), row.size) << name;
    if (stream.Tell() < 0) {
      long done = 9;
      EXPECT_EQ(stream.Read(memory, 1, &done) + done, 0) << name;
      done = 9;
      EXPECT_EQ(stream.Write(memory, 1, &done) + done, 0) << name;
    }
  }
}

TEST(CMemStream, WritesAnAttachedBufferInPlaceAndGrowsItsOwn) {
  unsigned char memory[6] = {'a', 'b', 'c', 'd', 'e', 'f'};
  char bytes[] = "123456789";
  long done = 0;
  CMemStream stream;
  EXPECT_EQ(stream.Attach(nullptr, 6) + stream.Attach(memory, 0) + stream.Attach(memory, -1), 0);
  EXPECT_EQ(stream.Attach(memory, 1L << 31), 0);
  ASSERT_EQ(stream.Attach(memory, 6), 1);
  stream.Open(3);
  ASSERT_EQ(stream.Seek(4, 1), 1);
  EXPECT_EQ(stream.Write(bytes, 9, &done), 0);
  EXPECT_EQ(done, 2) << "what fits";
  EXPECT_EQ(bytesOf(stream, 6), "abcd12");
  EXPECT_EQ(stream.Write(bytes, LONG_MIN, &done) + done, 0);
  EXPECT_EQ(stream.Write(bytes, 0, &done), 1);
  EXPECT_EQ(stream.ReMakeBuffer(7), 1);
  EXPECT_NE(stream.GetMemory(), memory) << "grown into a copy";
  EXPECT_EQ(stream.Write(bytes, 3, nullptr), 1);
  EXPECT_EQ(bytesOf(stream, 11), "abcd12123..");
  stream.Attach(memory, 6);
  stream.Open(2);
  EXPECT_EQ(bytesOf(stream, 6), "......") << "opened for writing alone";
  EXPECT_EQ(stream.GetSize(), 0);
  stream.ReleaseBuffer();
  EXPECT_EQ(stream.Write(bytes, 1, &done) + done, 0) << "still one that does not grow";
}

TEST(CMemStream, CutsAndGrowsInUnits) {
  const struct {
    long unit, size; // of ten bytes, position 10
    int result;
    long left = 10;
  } rows[] = {{4, 100, 1},
              {4, 9, 1},
              {4, 5, 1, 8},
              {4, 4, 1, 4},
              {4, 0, 1, 0},
              {4, -5, 1, 0},
              {4, INT_MIN, 1, INT_MIN + 4},
              {4, INT_MAX, 0},
              {4, LONG_MAX, 0},
              {4, LONG_MIN, 0}};
  for (const auto &row : rows) {
    char bytes[] = "0123456789";
    CMemStream stream;
    ASSERT_EQ(stream.CreateMemStream(12, row.unit, 0, nullptr), 1);
    stream.Open(3);
    ASSERT_EQ(stream.Write(bytes, 10, nullptr), 1);
    EXPECT_EQ(stream.ReMakeBuffer(row.size), row.result) << row.size;
    EXPECT_EQ(stream.GetSize(), row.left) << row.size;
    EXPECT_EQ(stream.Tell(), row.left) << row.size;
    const long kept = std::max(row.left, 0L);
    EXPECT_EQ(bytesOf(stream, 12), std::string(bytes, kept) + std::string(12 - kept, '.'));
  }
  CMemStream stream;
  char bytes[100] = {};
  EXPECT_EQ(stream.CreateMemStream(10, 0, 0, nullptr), 0) << "no unit";
  EXPECT_EQ(stream.CreateMemStream(0, 1L << 31, 0, nullptr), 0);
  ASSERT_EQ(stream.CreateMemStream(0, -10, 0, nullptr), 1);
  stream.Open(3);
  EXPECT_EQ(stream.Write(bytes, 100, nullptr) + stream.Seek(5, 1), 0) << "units round down";
}

TEST(CMemStream, WritesItsOwnBytesWhileItGrows) {
  char bytes[] = "abcdefghij";
  CMemStream stream;
  ASSERT_EQ(stream.CreateMemStream(0, 4, 0, nullptr), 1);
  stream.Open(2);
  ASSERT_EQ(stream.Write(bytes, 10, nullptr), 1);
  ASSERT_EQ(stream.Write(stream.GetMemory() + 2, 8, nullptr), 1);
  EXPECT_EQ(bytesOf(stream, 18), "abcdefghijcdefghij");
}

} // namespace
