#include "streams/CBlankStream.h"
#include "streams/CFileStream.h"
#include "streams/CMemStream.h"
#include "streams/CReductionStream.h"
#include "streams/CStringBuffer.h"
#include "streams/CTransPixelStream.h"
#include "testing/FailingMemory.h"

#include <gtest/gtest.h>

namespace searchsystem {

namespace {

/// Requests of more bytes than this fail.
std::size_t largestBlock = SIZE_MAX;

/// Calls while memory is short.
template <typename Call> auto shortOfMemory(const Call &call, std::size_t limit = 0) {
  largestBlock = limit;
  const auto result = call();
  largestBlock = SIZE_MAX;
  return result;
}

} // namespace

bool memoryFails(std::size_t size) noexcept { return size > largestBlock; }

namespace {

TEST(Shortage, LeavesBuffersAsTheyWere) {
  CResizeBuffer buffer(4);
  CStringBuffer string;
  string = "abc";
  ASSERT_EQ(buffer.SetData("abcd", 4), 1);
  const std::string large(64, 'x'); // fits, but not its end
  EXPECT_EQ(shortOfMemory([&] {
              return buffer.AddData("e", 1) + buffer.InsertData(0, "e", 1) +
                     buffer.SetData("vwxyz", 5) + string.SetString(large.c_str(), 64);
            }),
            0);
  EXPECT_EQ(std::string(buffer.GetData(nullptr), buffer.GetDataSize()), "abcd");
  EXPECT_STREQ(string, "abc");
}

TEST(Shortage, OfRoomToSpareDoesNotStopABuffer) {
  CResizeBuffer buffer(100);
  const auto add = [&] { return buffer.AddData(std::string(100, 'a').c_str(), 100); };
  for (int parts = 0; parts < 4; ++parts)
    EXPECT_EQ(shortOfMemory(add, 300 + 64), parts < 3 ? 1 : 0) << "twice as much is not to be had";
}

TEST(Shortage, LeavesStreamsAsTheyWere) {
  CFileStream file;
  const std::string path = "/dev" + std::string(100, '/') + "null";
  EXPECT_EQ(shortOfMemory([&] { return file.CreateFileStream(path.c_str(), 0, nullptr); }), 0);
  EXPECT_EQ(file.Open(2), 0);

  CMemStream memory, target;
  CBlankStream blank;
  CTransPixelStream conversion;
  CReductionStream reduction;
  char bytes[] = "abcdefgh";
  long done = 9;
  ASSERT_EQ(memory.CreateMemStream(0, 4, 0, nullptr) + memory.Open(3), 2);
  ASSERT_EQ(memory.Write(bytes, 8, nullptr) + memory.Seek(2, 1), 2);
  EXPECT_EQ(shortOfMemory([&] {
              return memory.Write(bytes, 7, &done) + memory.Seek(9, 1) + memory.Seek(7, 2) +
                     memory.Seek(1, 3) + memory.ReMakeBuffer(9);
            }),
            0);
  EXPECT_EQ(done, 0);
  EXPECT_EQ(memory.Tell(), 2);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(memory.GetMemory()), memory.GetSize()), bytes);
  EXPECT_EQ(shortOfMemory([&] {
              return blank.CreateBlankStream(&memory, 1, 1, 2, 2) +
                     conversion.CreateTransPixelStream(&memory, 1, pixelGrey8, pixelGrey16) +
                     reduction.CreateReductionStream(&memory, 1, 1, 1, 1, 1, reductionAverage) +
                     CopyStream(&target, &memory, 4);
            }),
            0);
  EXPECT_EQ(blank.Open(2) + conversion.Open(2) + reduction.Open(2) + target.Seek(0, 1) +
                memory.Seek(0, 1),
            0)
      << "all are closed";
}

} // namespace

} // namespace searchsystem
