#include "streams/CBlankStream.h"
#include "streams/CFileStream.h"
#include "streams/CMemStream.h"
#include "streams/CStringBuffer.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

namespace {

/// Requests of more bytes than this fail.
std::size_t largestBlock = SIZE_MAX;

struct Shortage {
  explicit Shortage(std::size_t limit = 0) { largestBlock = limit; }
  ~Shortage() { largestBlock = SIZE_MAX; }
};

} // namespace

void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
  return size > largestBlock ? nullptr : std::malloc(size > 0 ? size : 1);
}
void *operator new(std::size_t size) {
  if (void *const block = operator new(size, std::nothrow))
    return block;
  throw std::bad_alloc();
}
void *operator new[](std::size_t size) { return operator new(size); }
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
  return operator new(size, std::nothrow);
}
void operator delete(void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }
void operator delete[](void *block) noexcept { std::free(block); }
void operator delete[](void *block, std::size_t) noexcept { std::free(block); }

namespace {

/// Calls while memory is short.
template <typename Call> auto shortOfMemory(const Call &call) {
  const Shortage shortage;
  return call();
}

TEST(Shortage, LeavesBuffersAsTheyWere) {
  CResizeBuffer buffer(4);
  ASSERT_EQ(buffer.SetData("abcd", 4), 1);
  EXPECT_EQ(shortOfMemory([&] {
              return buffer.AddData("e", 1) + buffer.InsertData(0, "e", 1) +
                     buffer.SetData("vwxyz", 5);
            }),
            0);
  EXPECT_EQ(std::string(buffer.GetData(nullptr), buffer.GetDataSize()), "abcd");

  CStringBuffer string;
  string = "abc";
  const std::string large(64, 'x'); // fits, but not its end
  EXPECT_EQ(shortOfMemory([&] { return string.SetString(large.c_str(), 64); }), 0);
  EXPECT_STREQ(string, "abc");
}

TEST(Shortage, OfRoomToSpareDoesNotStopABuffer) {
  CResizeBuffer buffer(100);
  const std::string part(100, 'a');
  const Shortage shortage(300 + 64);
  for (int parts = 0; parts < 3; ++parts)
    EXPECT_EQ(buffer.AddData(part.c_str(), 100), 1) << "twice as much is not to be had";
  EXPECT_EQ(buffer.AddData(part.c_str(), 1), 0);
}

TEST(Shortage, LeavesStreamsAsTheyWere) {
  TemporaryTree tree;
  CFileStream file;
  const std::string path = tree.file("a", "abc");
  EXPECT_EQ(shortOfMemory([&] { return file.CreateFileStream(path.c_str(), 0, nullptr); }), 0);
  EXPECT_EQ(file.Open(1), 0);

  CMemStream memory;
  char bytes[] = "abcdefgh";
  ASSERT_EQ(memory.CreateMemStream(0, 4, 0, nullptr), 1);
  memory.Open(3);
  ASSERT_EQ(memory.Write(bytes, 8, nullptr) + memory.Seek(2, 1), 2);
  long done = 9;
  EXPECT_EQ(shortOfMemory([&] {
              return memory.Write(bytes, 7, &done) + memory.Seek(9, 1) + memory.Seek(7, 2) +
                     memory.Seek(1, 3) + memory.ReMakeBuffer(9);
            }),
            0);
  EXPECT_EQ(done, 0);
  EXPECT_EQ(memory.Tell(), 2);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(memory.GetMemory()), memory.GetSize()), bytes);

  CBlankStream blank;
  CMemStream target;
  EXPECT_EQ(shortOfMemory([&] {
              return blank.CreateBlankStream(&memory, 1, 1, 2, 2) + CopyStream(&target, &memory, 4);
            }),
            0);
  EXPECT_EQ(blank.Open(2) + target.Seek(0, 1) + memory.Seek(0, 1), 0) << "all are closed";
}

} // namespace
