#include "streams/CBlankStream.h"
#include "streams/CMemStream.h"

#include <climits>
#include <gtest/gtest.h>

namespace searchsystem {

namespace {

std::string contentOf(CMemStream &stream) {
  return {reinterpret_cast<const char *>(stream.GetMemory()),
          static_cast<std::size_t>(stream.GetSize())};
}

TEST(CBlankStream, PadsCanvasesOfAnySize) {
  const struct {
    long width, height, canvasWidth, canvasHeight;
    long part; // how many bytes are written at a time
  } rows[] = {{2, 2, 4, 4, 12},     {1, 1, 1, 1, 3},         {5, 3, 5, 3, 4},
              {5, 3, 8, 3, 1},      {5, 3, 5, 8, 7},         {3, 2, 300, 201, 5},
              {50, 40, 51, 41, 64}, {640, 5, 641, 100, 9999}};
  for (const auto &[width, height, canvasWidth, canvasHeight, part] : rows) {
    const auto name = testing::Message() << canvasWidth << " by " << canvasHeight;
    const long left = (canvasWidth - width) / 2;
    std::string image, expected((canvasHeight - height) / 2 * canvasWidth * 3, 0);
    for (long y = 0; y < height; ++y) {
      const std::string row(width * 3, static_cast<char>(1 + y));
      image += row;
      expected += std::string(left * 3, 0) + row + std::string((canvasWidth - left - width) * 3, 0);
    }
    CMemStream target;
    CBlankStream blank;
    blank.CreateBlankStream(&target, width, height, canvasWidth, canvasHeight);
    ASSERT_EQ(blank.Open(2), 1);
    for (std::size_t at = 0; at < image.size(); at += part)
      ASSERT_EQ(blank.Write(&image[at], std::min<long>(part, image.size() - at), nullptr), 1);
    EXPECT_TRUE(contentOf(target) == expected) << name << ": no rows below";
    ASSERT_EQ(blank.Write(image.data(), 1, nullptr) + blank.Close(), 2);
    expected += expected.substr(expected.size() - canvasWidth * 3);
    expected[expected.size() - (canvasWidth - left) * 3] = image[0];
    EXPECT_TRUE(contentOf(target) == expected) << name << ": a row that was begun";
  }
}

TEST(CBlankStream, TakesOddSizesWithoutHarm) {
  const struct {
    long sizes[4];
    int created, written;
    long size;
  } rows[] = {{{3, 1, 2, 2}, 0, 0, 0},     {{1, 0, 2, 5}, 1, 1, 36},
              {{0, 1, 2, 3}, 1, 0, 6},     {{-5, 1, 2, 3}, 1, 0, 6},
              {{-5, -5, -2, -2}, 0, 0, 0}, {{1, 1, INT_MAX, 1}, 0, 0, 0},
              {{0, 0, 0, 0}, 1, 0, 0},     {{1, INT_MIN, 1, INT_MAX}, 0, 0, 0}};
  for (const auto &[sizes, created, written, size] : rows) {
    CMemStream target;
    CBlankStream blank;
    char bytes[] = "abc";
    const auto name = testing::Message() << sizes[0] << " " << sizes[1];
    const int result = blank.CreateBlankStream(&target, sizes[0], sizes[1], sizes[2], sizes[3]);
    EXPECT_EQ(result + blank.Open(2), 2 * created) << name;
    EXPECT_EQ(blank.Write(bytes, 3, nullptr), written) << name;
    EXPECT_EQ(target.GetSize(), size) << name;
    EXPECT_EQ(blank.ReleaseBuffer() + blank.Write(bytes, 3, nullptr), 1) << "its row is gone";
  }
}

/// Writes down what is done to it, as in ">open2", and answers 7 to what is to fail.
struct LoggedStream : CIOStream {
  LoggedStream(std::string &sharedLog, const char *ownName, const char *toFail, long ownSize)
      : log(sharedLog), name(ownName), failing(toFail), size(ownSize) {}
  int Open(unsigned short mode) override { return answer("open" + std::to_string(mode)); }
  int Close() override { return answer("close"); }
  int Read(void *, long count, long *) override { return answer("read" + std::to_string(count)); }
  int Write(void *, long count, long *) override { return answer("write" + std::to_string(count)); }
  long GetSize() override { return size; }

  int answer(const std::string &operation) {
    log += name + operation + " ";
    return name + operation == failing ? 7 : 1;
  }

  std::string &log;
  const std::string name, failing;
  const long size;
};

TEST(CopyStream, OpensCopiesAndCloses) {
  const struct {
    long size, block;
    const char *failing;
    int result;
    const char *log;
  } rows[] = {{0, 4, "", 1, "<open1 >open2 >close <close "},
              {5, 4, "", 1, "<open1 >open2 <read4 >write4 <read1 >write1 >close <close "},
              {5, LONG_MAX, "", 1, "<open1 >open2 <read5 >write5 >close <close "},
              {5, 0, "", 0, ""},
              {5, -1, "", 0, "<open1 >open2 >close <close "},
              {-5, 4, "", 0, "<open1 >open2 >close <close "},
              {5, 4, "<open1", 7, "<open1 "},
              {5, 4, ">open2", 7, "<open1 >open2 <close "},
              {5, 4, "<read4", 7, "<open1 >open2 <read4 >close <close "},
              {5, 4, ">write4", 7, "<open1 >open2 <read4 >write4 >close <close "}};
  for (const auto &row : rows) {
    std::string log;
    LoggedStream source(log, "<", row.failing, row.size), target(log, ">", row.failing, row.size);
    EXPECT_EQ(CopyStream(&target, &source, row.block), row.result) << row.log;
    EXPECT_EQ(log, row.log);
  }
}

} // namespace

} // namespace searchsystem
