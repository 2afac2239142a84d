#include "streams/CMemStream.h"
#include "streams/CReductionStream.h"
#include "streams/CTransPixelStream.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace searchsystem {

namespace {

std::string contentOf(CMemStream &stream) {
  return {reinterpret_cast<const char *>(stream.GetMemory()),
          static_cast<std::size_t>(stream.GetSize())};
}

std::string randomBytes(std::mt19937 &random, std::size_t count) {
  std::string bytes(count, 0);
  for (char &byte : bytes)
    byte = static_cast<char>(random());
  return bytes;
}

/// Writes the image in blocks of any size; whether all of them succeed.
bool writeInBlocks(CIOStream &stream, std::string image, std::mt19937 &random) {
  for (std::size_t at = 0; at < image.size();) {
    const std::size_t count = std::min<std::size_t>(1 + random() % 40, image.size() - at);
    if (stream.Write(image.data() + at, static_cast<long>(count), nullptr) != 1)
      return false;
    at += count;
  }
  return true;
}

/// A target whose write with this number, from 0, answers 7.
struct FailingTarget : CIOStream {
  explicit FailingTarget(int failing) : left(failing) {}
  int Open(unsigned short) override { return 1; }
  int Close() override { return 1; }
  int Write(void *, long, long *) override { return left-- == 0 ? 7 : 1; }

  int left;
};

struct Image {
  long width, height, pixelBytes;
  std::string bytes;

  [[nodiscard]] int at(long x, long y, long i) const {
    return static_cast<unsigned char>(bytes[(y * width + x) * pixelBytes + i]);
  }
};

int nearest(const Image &image, long x, long y, long i, long newWidth, long newHeight) {
  return image.at(x * image.width / newWidth, y * image.height / newHeight, i);
}

/// How much a centre counts for one at a distance, both in parts of 2 * newSize.
long nearness(long old, long size, long index, long newSize) {
  return std::max(0L, 2 * newSize - std::abs((2 * old + 1) * newSize - (2 * index + 1) * size));
}

int bilinear(const Image &image, long x, long y, long i, long newWidth, long newHeight) {
  long sum = 0;
  for (long row = 0; row < image.height; ++row)
    for (long column = 0; column < image.width; ++column)
      sum += nearness(row, image.height, y, newHeight) *
             nearness(column, image.width, x, newWidth) * image.at(column, row, i);
  const long whole = 4 * newWidth * newHeight;
  return static_cast<int>((sum + whole / 2) / whole);
}

/// How much of [begin, end) lies in [otherBegin, otherEnd).
long shared(long begin, long end, long otherBegin, long otherEnd) {
  return std::max(0L, std::min(end, otherEnd) - std::max(begin, otherBegin));
}

int average(const Image &image, long x, long y, long i, long newWidth, long newHeight) {
  long sum = 0;
  for (long row = 0; row < image.height; ++row)
    for (long column = 0; column < image.width; ++column)
      sum +=
          shared(row * newHeight, (row + 1) * newHeight, y * image.height, (y + 1) * image.height) *
          shared(column * newWidth, (column + 1) * newWidth, x * image.width,
                 (x + 1) * image.width) *
          image.at(column, row, i);
  const long area = image.width * image.height;
  return static_cast<int>((sum + area / 2) / area);
}

using Pixel = int (*)(const Image &, long x, long y, long i, long newWidth, long newHeight);
const struct {
  ReductionMethod method;
  Pixel pixel;
} methods[] = {
    {reductionNearest, nearest}, {reductionBilinear, bilinear}, {reductionAverage, average}};

void compareReductions(const Image &image, long newWidth, long newHeight, std::mt19937 &random) {
  for (const auto &[method, pixel] : methods) {
    std::string expected;
    for (long y = 0; y < newHeight; ++y)
      for (long x = 0; x < newWidth; ++x)
        for (long i = 0; i < image.pixelBytes; ++i)
          expected += static_cast<char>(pixel(image, x, y, i, newWidth, newHeight));
    CMemStream target;
    CReductionStream reduction;
    ASSERT_EQ(reduction.CreateReductionStream(&target, image.width, image.height, image.pixelBytes,
                                              newWidth, newHeight, method),
              1);
    // The second image must know nothing of the first, which ends early.
    ASSERT_EQ(reduction.Open(2), 1);
    writeInBlocks(reduction, image.bytes.substr(0, random() % image.bytes.size()), random);
    ASSERT_EQ(reduction.Close() + reduction.Open(2), 2);
    EXPECT_TRUE(writeInBlocks(reduction, image.bytes, random));
    char more[] = "x";
    EXPECT_EQ(reduction.Write(more, 1, nullptr), 0) << "the image is complete";
    EXPECT_EQ(reduction.Close(), 1);
    ASSERT_TRUE(contentOf(target) == expected)
        << "method " << method << ", " << image.width << " by " << image.height << " to "
        << newWidth << " by " << newHeight << ", " << image.pixelBytes << " bytes";
  }
}

TEST(CReductionStream, ReducesAsADirectComputationDoes) {
  std::mt19937 random(1);
  for (const long pixelBytes : {1L, 3L})
    for (long size = 0; size < 81; ++size) {
      const long width = size / 9 + 1, height = size % 9 + 1;
      const Image image{width, height, pixelBytes,
                        randomBytes(random, width * height * pixelBytes)};
      for (long newSize = 0; newSize < width * height; ++newSize)
        compareReductions(image, newSize / height + 1, newSize % height + 1, random);
    }
  for (int i = 0; i < 40; ++i) {
    const auto upTo = [&](long most) {
      return std::uniform_int_distribution<long>(1, most)(random);
    };
    const long width = upTo(80), height = upTo(80), pixelBytes = i % 2 * 2 + 1;
    const Image image{width, height, pixelBytes, randomBytes(random, width * height * pixelBytes)};
    compareReductions(image, upTo(width), upTo(height), random);
  }
}

TEST(CReductionStream, EndsWhereTheImageEnds) {
  // The rows of the new image that are there after so many bytes of 2 by 6 pixels.
  const struct {
    ReductionMethod method;
    long newHeight;
    const char *rowsAfter;                            // 0 to 12 bytes
  } rows[] = {{reductionNearest, 3, "0011112222333"}, // rows 0, 2, 4
              {reductionBilinear, 3, "0000111122223"},
              {reductionAverage, 3, "0000111122223"},
              {reductionBilinear, 6, "0011223344556"}};
  for (const auto &[method, newHeight, rowsAfter] : rows)
    for (long bytes = 0; bytes <= 12; ++bytes) {
      CMemStream target;
      CReductionStream reduction;
      ASSERT_EQ(reduction.CreateReductionStream(&target, 2, 6, 1, 1, newHeight, method), 1);
      std::string image(12, 'x');
      EXPECT_EQ(
          reduction.Open(2) + reduction.Write(image.data(), bytes, nullptr) + reduction.Close(), 3);
      EXPECT_EQ(target.GetSize(), rowsAfter[bytes] - '0') << "method " << method << ", " << bytes;
    }
}

TEST(CReductionStream, RefusesWhatCannotBe) {
  CMemStream target;
  const struct {
    CIOStream *target;
    long sizes[5]; // width, height, bytes of a pixel, new width, new height
    int method, created;
  } rows[] = {{&target, {2, 2, 1, 2, 2}, 2, 1},       {nullptr, {2, 2, 1, 2, 2}, 2, 0},
              {&target, {2, 2, 1, 3, 2}, 0, 0},       {&target, {2, 2, 1, 2, 3}, 1, 0},
              {&target, {2, 2, 2, 2, 2}, 2, 0},       {&target, {2, 2, 1, 0, 2}, 2, 0},
              {&target, {2, 2, 1, 2, -1}, 2, 0},      {&target, {0, 0, 1, 0, 0}, 2, 0},
              {&target, {2, 2, 1, 2, 2}, 3, 0},       {&target, {LONG_MAX, 2, 3, 2, 2}, 2, 0},
              {&target, {2, 1L << 25, 1, 2, 2}, 2, 0}};
  for (const auto &[to, sizes, method, created] : rows) {
    CReductionStream reduction;
    char bytes[] = "abcd";
    EXPECT_EQ(reduction.CreateReductionStream(to, sizes[0], sizes[1], sizes[2], sizes[3], sizes[4],
                                              static_cast<ReductionMethod>(method)),
              created)
        << sizes[0] << " " << sizes[3] << " " << method;
    EXPECT_EQ(reduction.Open(2) + reduction.Write(bytes, 4, nullptr), 2 * created);
    EXPECT_EQ(reduction.Write(nullptr, 1, nullptr) + reduction.Read(bytes, 1, nullptr) +
                  reduction.Seek(0, streamSeekBegin) + reduction.Tell() + reduction.GetSize(),
              0);
    EXPECT_EQ(reduction.Release(), 1);
    EXPECT_EQ(reduction.Open(2) + reduction.Write(bytes, 1, nullptr) + reduction.Close(), 0);
  }
}

TEST(PixelStreams, HandTheTargetsFailureOn) {
  for (const auto &[method, pixel] : methods)
    for (int failing = 0; failing < 3; ++failing) {
      FailingTarget target(failing);
      CReductionStream reduction;
      reduction.CreateReductionStream(&target, 2, 6, 1, 2, 3, method);
      std::string image(12, 'x');
      int result = reduction.Open(2);
      int written = 0;
      for (; result == 1 && written < 12; ++written)
        result = reduction.Write(image.data(), 1, nullptr);
      EXPECT_EQ(result, 7) << "method " << method;
      EXPECT_EQ(written, method == reductionNearest ? 2 + 4 * failing : 4 + 4 * failing);
    }
  FailingTarget target(1);
  CTransPixelStream conversion;
  conversion.CreateTransPixelStream(&target, 1, pixelRGB8, pixelGrey8);
  char pixels[] = "abcabcabc";
  EXPECT_EQ(conversion.Write(pixels, 9, nullptr), 7);
  EXPECT_EQ(conversion.Write(pixels, 3, nullptr), 1) << "it takes further rows";
}

/// The samples of a pixel: grey, or red, green and blue.
std::vector<unsigned> samplesAt(const std::string &image, long pixel, PixelFormat format) {
  const bool isDeep = format >= pixelGrey16, isGrey = format % 3 == 0;
  std::vector<unsigned> samples;
  for (long i = 0; i < (isGrey ? 1 : 3); ++i) {
    const long at = isGrey ? pixel : pixel * 3 + (format % 3 == pixelBGR8 ? 2 - i : i);
    std::uint16_t deep = 0;
    std::memcpy(&deep, image.data() + (isDeep ? at * 2 : 0), 2);
    samples.push_back(isDeep ? deep : static_cast<unsigned char>(image[at]));
  }
  return samples;
}

TEST(CTransPixelStream, ConvertsEveryFormat) {
  std::mt19937 random(2);
  for (int from = pixelGrey8; from <= pixelBGR16; ++from)
    for (int to = pixelGrey8; to <= pixelBGR16; ++to)
      for (const long width : {1L, 2L, 7L, 300L}) {
        const auto fromFormat = static_cast<PixelFormat>(from),
                   toFormat = static_cast<PixelFormat>(to);
        const long rows = 4, pixels = width * rows;
        const long rowBytes = width * (from % 3 == 0 ? 1 : 3) * (from / 3 + 1);
        std::string image = randomBytes(random, rowBytes * rows);
        std::fill_n(image.begin(), 6, '\xFF');
        CMemStream target;
        CTransPixelStream conversion;
        ASSERT_EQ(conversion.CreateTransPixelStream(&target, width, fromFormat, toFormat), 1);
        EXPECT_EQ(conversion.Open(2), 1);
        EXPECT_TRUE(writeInBlocks(conversion, image + image.substr(0, rowBytes - 1), random));
        EXPECT_EQ(conversion.Close(), 1);
        const std::string converted = contentOf(target);
        ASSERT_EQ(converted.size(), pixels * (to % 3 == 0 ? 1 : 3) * (to / 3 + 1))
            << "a half row is dropped";
        for (long pixel = 0; pixel < pixels; ++pixel) {
          std::vector<unsigned> expected = samplesAt(image, pixel, fromFormat);
          if (to % 3 == 0 && expected.size() == 3)
            expected = {(77 * expected[0] + 150 * expected[1] + 29 * expected[2] + 128) / 256};
          for (unsigned &sample : expected)
            sample = from / 3 < to / 3   ? sample * 257
                     : from / 3 > to / 3 ? (sample + 128) / 257
                                         : sample;
          if (to % 3 != 0)
            expected.resize(3, expected[0]);
          ASSERT_EQ(samplesAt(converted, pixel, toFormat), expected)
              << from << " to " << to << ", pixel " << pixel << " of " << width << " a row";
        }
      }
}

TEST(CTransPixelStream, RefusesWhatCannotBe) {
  CMemStream target;
  const struct {
    CIOStream *target;
    long width;
    int from, to;
  } rows[] = {{nullptr, 1, 0, 0},       {&target, 0, 0, 0},          {&target, -1, 0, 0},
              {&target, 1, 6, 0},       {&target, 1, 0, 6},          {&target, LONG_MAX, 0, 0},
              {&target, INT_MAX, 0, 4}, {&target, INT_MAX / 2, 1, 0}};
  for (const auto &[to, width, fromFormat, toFormat] : rows) {
    CTransPixelStream conversion;
    EXPECT_EQ(conversion.CreateTransPixelStream(to, width, static_cast<PixelFormat>(fromFormat),
                                                static_cast<PixelFormat>(toFormat)),
              0)
        << width << " " << fromFormat << " " << toFormat;
    char bytes[] = "a";
    EXPECT_EQ(conversion.Open(2) + conversion.Write(bytes, 1, nullptr) + conversion.Close(), 0);
  }
}

} // namespace

} // namespace searchsystem
