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
  } rows[] = {
      {false, 3, 10, 1, 1, 10},
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
      {true, 3, -10, 3, 1, 30},
  };
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
    EXPECT_EQ(stream.Seek(10, 1), row.isAttached ? 0 : 1) << "closed once opened for writing only";
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
  EXPECT_EQ(stream.Read(bytes, 1, nullptr) + stream.Write(bytes, 1, nullptr), 0) << "not open";
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
  constexpr long none = -1;
  const struct {
    const char *name;
    long unit, size; // of ten bytes, position 10
    int result;
    long dataSize = 10, position = 10;
  } rows[] = {
      {"growing", 4, 100, 1},
      {"the same", 4, 9, 1},
      {"cutting", 4, 5, 1, 8, 8},
      {"cutting to whole units", 4, 4, 1, 4, 4},
      {"cutting all", 4, 0, 1, 0, 0},
      {"below zero", 4, -5, 1, 0, 0},
      {"far below zero", 4, INT_MIN, 1, INT_MIN + 4, INT_MIN + 4},
      {"rounded beyond 32 bits", 4, INT_MAX, 0},
      {"beyond 32 bits", 4, LONG_MAX, 0},
      {"beyond 32 bits below zero", 4, LONG_MIN, 0},
      {"large unit", INT_MAX, none, 1, 0, 0},
  };
  for (const auto &row : rows) {
    char bytes[] = "0123456789";
    CMemStream stream;
    ASSERT_EQ(stream.CreateMemStream(12, row.unit, 0, nullptr), 1);
    stream.Open(3);
    ASSERT_EQ(stream.Write(bytes, 10, nullptr), 1);
    EXPECT_EQ(stream.ReMakeBuffer(row.size), row.result) << row.name;
    EXPECT_EQ(stream.GetSize(), row.dataSize) << row.name;
    EXPECT_EQ(stream.Tell(), row.position) << row.name;
    const long kept = std::max(row.dataSize, 0L);
    EXPECT_EQ(bytesOf(stream, 12), std::string(bytes, kept) + std::string(12 - kept, '.'))
        << row.name;
  }
  CMemStream stream;
  char bytes[100] = {};
  EXPECT_EQ(stream.CreateMemStream(10, 0, 0, nullptr), 0) << "no unit";
  EXPECT_EQ(stream.CreateMemStream(0, 1L << 31, 0, nullptr), 0);
  EXPECT_EQ(stream.CreateMemStream(LONG_MAX, 1, 0, nullptr), 0);
  ASSERT_EQ(stream.CreateMemStream(0, -10, 0, nullptr), 1);
  stream.Open(3);
  EXPECT_EQ(stream.Write(bytes, 100, nullptr) + stream.Seek(5, 1), 0) << "units round down";
  EXPECT_EQ(stream.GetSize(), 0);
}

TEST(CMemStream, WritesItsOwnBytesWhileItGrows) {
  char bytes[] = "abcdefghij";
  CMemStream stream;
  ASSERT_EQ(stream.CreateMemStream(0, 4, 0, nullptr), 1);
  stream.Open(2);
  ASSERT_EQ(stream.Write(bytes, 10, nullptr), 1);
  ASSERT_EQ(stream.Write(stream.GetMemory() + 2, 8, nullptr), 1);
  EXPECT_EQ(bytesOf(stream, 18), "abcdefghijcdefghij");
  stream.Close();
  EXPECT_EQ(stream.GetSize(), 18) << "the data stays";
  stream.Open(1);
  long done = 0;
  ASSERT_EQ(stream.Seek(16, 1), 1);
  EXPECT_EQ(stream.Read(bytes, 10, &done), 1);
  EXPECT_EQ(done, 2);
  EXPECT_EQ(stream.Read(bytes, 10, &done) + done, 0) << "at the end";
  EXPECT_EQ(stream.Seek(0, 1), 1);
  EXPECT_EQ(stream.Read(bytes, -1, &done) + done, 0);
}

} // namespace
