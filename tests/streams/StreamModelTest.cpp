#include "streams/CFileStream.h"
#include "streams/CMemStream.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace {

/// What a stream that is open for reading and writing has to hold and to answer, said plainly.
struct Model {
  bool isFile;
  bool canRead;
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
    if (position < 0 && !bytes.empty())
      return 0;
    if (!bytes.empty()) {
      data.resize(std::max(size(), position + static_cast<long>(bytes.size())));
      data.replace(position, bytes.size(), bytes);
      position += static_cast<long>(bytes.size());
    }
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
    const long count = upTo(5) == 0 ? upTo(9000) : upTo(60);
    switch (upTo(2)) {
    case 0: {
      std::string bytes(static_cast<std::size_t>(count), 0);
      long done = -1;
      const int result = stream.Read(bytes.data(), count, &done);
      ASSERT_GE(done, 0) << where;
      ASSERT_EQ(std::to_string(result) + bytes.substr(0, done), model.read(count)) << where;
      break;
    }
    case 1: {
      std::string bytes(static_cast<std::size_t>(count), static_cast<char>('a' + step % 26));
      long done = -1;
      const int result = stream.Write(bytes.data(), count, &done);
      ASSERT_EQ(result, model.write(bytes)) << where;
      ASSERT_EQ(done, result == 1 ? count : 0) << where;
      break;
    }
    default: {
      const int origin = static_cast<int>(1 + upTo(2));
      const long offset = origin == 1 ? upTo(model.size() + 100) - 50 : upTo(300) - 150;
      ASSERT_EQ(stream.Seek(offset, origin), model.seek(offset, origin)) << where << ": " << offset;
    }
    }
    ASSERT_EQ(stream.Tell(), model.position) << where;
    if (upTo(3) == 0) {
      ASSERT_EQ(stream.GetSize(), model.size()) << where;
    }
  }
  stream.Close();
  ASSERT_EQ(stream.Open(1), 1);
  std::string all(model.data.size(), 0);
  ASSERT_EQ(stream.Read(all.data(), model.size(), nullptr), 1);
  EXPECT_TRUE(all == model.data) << "seed " << seed;
}

TEST(StreamModel, StreamsHoldWhatWasWritten) {
  TemporaryTree tree;
  const long units[] = {1, 7, 64, 4096};
  for (unsigned seed = 0; seed < 12; ++seed) {
    const bool canRead = seed % 2 == 0;
    CFileStream file;
    CMemStream memory;
    ASSERT_EQ(file.CreateFileStream(tree.file("a").c_str(), 0, nullptr), 1);
    ASSERT_EQ(memory.CreateMemStream(seed % 3 * 100, units[seed % 4], 0, nullptr), 1);
    ASSERT_EQ(file.Open(canRead ? 3 : 2) + memory.Open(canRead ? 3 : 2), 2);
    drive(file, Model{true, canRead}, seed);
    drive(memory, Model{false, canRead}, seed);
  }
}

} // namespace
