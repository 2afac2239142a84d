#include "streams/CStringBuffer.h"

#include <gtest/gtest.h>

namespace searchsystem {

namespace {

std::string textOf(const CResizeBuffer &buffer) {
  unsigned long size = 0;
  const char *const data = buffer.GetData(&size);
  return data == nullptr ? "none" : std::string(data, size);
}

TEST(CResizeBuffer, InsertsByMovingAsMuchAsItInserts) {
  const struct {
    unsigned long position;
    std::string inserted, after; // of "abcd"
    int result = 1;
  } rows[] = {{2, "XY", "abXYcd"},   {1, "X", std::string("aXbd\0", 5)},
              {3, "XYZ", "abcXYZd"}, {5, "X", "abcd", 0},
              {4, "XYZ", "abcdXYZ"}, {-1UL, "X", "abcd", 0}};
  // The smallest step lets a byte outside the block be noticed, 0 stands for a large one.
  for (const unsigned long step : {1UL, 3UL, 0UL}) {
    for (const auto &[position, inserted, after, result] : rows) {
      CResizeBuffer buffer(step);
      buffer.SetData("abcd", 4);
      EXPECT_EQ(buffer.InsertData(position, inserted.data(), inserted.size()), result) << position;
      EXPECT_EQ(textOf(buffer), after) << step;
    }
  }
}

TEST(CResizeBuffer, KeepsItsBytesThroughGrowthAndShowsZerosBehindThem) {
  for (const unsigned long step : {0UL, 1UL, 7UL, 64UL}) {
    CResizeBuffer buffer(step);
    std::string model;
    for (unsigned long length = 1; model.size() < 5000; length = length * 3 / 2 + 1) {
      const std::string part(length, static_cast<char>('a' + length % 26));
      ASSERT_EQ(buffer.AddData(part.data(), length), 1);
      ASSERT_EQ(model += part, textOf(buffer));
      for (unsigned long at = model.size(); at % (step == 0 ? 1024 : step) != 0; ++at)
        ASSERT_EQ(buffer.GetData(nullptr)[at], 0) << step << ": " << at;
    }
    ASSERT_EQ(buffer.AddData(buffer.GetData(nullptr), model.size()), 1) << "a buffer into itself";
    EXPECT_EQ(textOf(buffer), model + model);
    EXPECT_EQ(buffer.AddData(nullptr, 0) + buffer.AddData("x", -1UL), 0) << "more than has a size";
    buffer.Reset();
    EXPECT_EQ(textOf(buffer), "none");
    buffer.Release();
    EXPECT_EQ(buffer.AddData("x", 1) + buffer.SetData("x", 1) + buffer.InsertData(0, "x", 1), 0);
  }
}

TEST(CStringBuffer, HoldsTextEmptyTextOrNone) {
  CStringBuffer string;
  const auto is = [&](const std::string &text, unsigned long length) {
    const char *const actual = string;
    return (actual == nullptr ? "none" : actual) == text && string.GetLength() == length;
  };
  EXPECT_TRUE(is("none", 0));
  EXPECT_EQ(string.SetString("abc", -1), 1);
  EXPECT_TRUE(is("abc", 3));
  EXPECT_EQ(string.SetString("abc", 2) + string.SetString(nullptr, 2), 1);
  (string = nullptr) += nullptr;
  EXPECT_TRUE(is("ab", 2));
  EXPECT_TRUE((string += "xyz", is("ab", 3))) << "one byte longer, and reads the same";
  EXPECT_TRUE((string = string + 1, is("b", 1))) << "of itself";
  EXPECT_TRUE(string.Reset() == 1 && is("", 0));
  const std::string full(64, 'f');
  string = full.c_str();
  EXPECT_EQ(string.SetString(string, 65), 1);
  EXPECT_TRUE(is(full, 65)) << "its end needed a step of its own";
  EXPECT_EQ(string.Release(), 1);
  EXPECT_EQ(string.SetString("a", -1) + string.Reset(), 0);
}

} // namespace

} // namespace searchsystem
