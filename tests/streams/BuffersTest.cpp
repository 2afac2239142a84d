#include "streams/CResizeBuffer.h"
#include "streams/CStringBuffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

std::string textOf(const CResizeBuffer &buffer) {
  unsigned long size = 0;
  const char *const data = buffer.GetData(&size);
  return data == nullptr ? "none" : std::string(data, size);
}

TEST(CResizeBuffer, InsertsByMovingAsMuchAsItInserts) {
  const struct {
    unsigned long position;
    const char *inserted, *after; // of "abcd"
  } rows[] = {{2, "XY", "abXYcd"},
              {1, "X", "aXbd?"},
              {3, "XYZ", "abcXYZd"},
              {4, "XYZ", "abcdXYZ"},
              {1, "", "abcd"},
              {5, "X", nullptr},
              {static_cast<unsigned long>(-1), "X", nullptr}};
  // The smallest step lets a byte outside the block be noticed, 0 stands for a large one.
  for (const unsigned long step : {1UL, 3UL, 0UL}) {
    for (const auto &row : rows) {
      CResizeBuffer buffer(step);
      buffer.SetData("abcd", 4);
      EXPECT_EQ(buffer.InsertData(row.position, row.inserted, std::strlen(row.inserted)),
                row.after != nullptr ? 1 : 0);
      // A longer tail leaves at its end what the block held there: zero after it has grown.
      std::string after = row.after != nullptr ? row.after : "abcd";
      if (after.back() == '?')
        after.back() = 0;
      EXPECT_EQ(textOf(buffer), after) << row.position << row.inserted << ", step " << step;
    }
  }
}

TEST(CResizeBuffer, KeepsItsBytesThroughGrowthAndShowsZerosBehindThem) {
  for (const unsigned long step : {0UL, 1UL, 7UL, 64UL}) {
    const unsigned long unit = step == 0 ? 1024 : step;
    CResizeBuffer buffer(step);
    std::string model;
    for (unsigned long length = 0; model.size() < 5000; length = length * 3 / 2 + 1) {
      const std::string part(length, static_cast<char>('a' + length % 26));
      ASSERT_EQ(buffer.AddData(part.data(), length), 1);
      const unsigned long size = model.size() + length;
      const bool hasGrown = (model.size() + unit - 1) / unit != (size + unit - 1) / unit;
      model += part;
      ASSERT_EQ(model.empty() ? "none" : model, textOf(buffer));
      for (unsigned long at = size; hasGrown && at % unit != 0; ++at)
        ASSERT_EQ(buffer.GetData(nullptr)[at], 0) << step << ": " << at << " of " << size;
    }
    ASSERT_EQ(buffer.AddData(buffer.GetData(nullptr), model.size()), 1) << "a buffer into itself";
    EXPECT_EQ(textOf(buffer), model + model);
    ASSERT_EQ(buffer.SetData(buffer.GetData(nullptr) + 3, 100), 1);
    EXPECT_EQ(textOf(buffer), model.substr(3, 100));
  }
}

TEST(CResizeBuffer, TakesNothingOnceReleased) {
  CResizeBuffer buffer(16);
  EXPECT_EQ(buffer.SetData("abc", 3), 1);
  EXPECT_EQ(buffer.AddData(nullptr, 0) + buffer.SetData(nullptr, 2), 0);
  EXPECT_EQ(buffer.AddData("x", static_cast<unsigned long>(-1)), 0) << "more than has a size";
  EXPECT_EQ(textOf(buffer), "abc");
  buffer.Reset();
  EXPECT_EQ(textOf(buffer), "none");
  buffer.Release();
  EXPECT_EQ(buffer.AddData("x", 1) + buffer.SetData("x", 1) + buffer.InsertData(0, "x", 1), 0);
}

TEST(CStringBuffer, HoldsTextEmptyTextOrNone) {
  CStringBuffer string;
  const auto is = [&](const char *text, unsigned long length) {
    const char *const actual = string;
    return std::string(actual == nullptr ? "none" : actual) == text && string.GetLength() == length;
  };
  EXPECT_TRUE(is("none", 0));
  EXPECT_EQ(string.SetString("abc", -1), 1);
  EXPECT_TRUE(is("abc", 3));
  EXPECT_EQ(string.SetString("abc", 2), 1);
  EXPECT_TRUE(is("ab", 2));
  EXPECT_EQ(string.SetString(nullptr, 2), 0);
  string = nullptr;
  string += nullptr;
  EXPECT_TRUE(is("ab", 2));
  string += "xyz";
  EXPECT_TRUE(is("ab", 3)) << "one byte longer, and reads the same";
  string = string + 1;
  EXPECT_TRUE(is("b", 1)) << "of itself";
  EXPECT_EQ(string.Reset(), 1);
  EXPECT_TRUE(is("", 0));
  const std::string full(64, 'f');
  string = full.c_str();
  EXPECT_TRUE(is(full.c_str(), 64)) << "the end needs a step of its own";
  EXPECT_EQ(string.SetString(string, 65), 1);
  EXPECT_TRUE(is(full.c_str(), 65));
  EXPECT_EQ(string.Release(), 1);
  EXPECT_TRUE(is("none", 0));
  EXPECT_EQ(string.SetString("a", -1) + string.Reset(), 0);
  CStringBuffer added;
  added += "first";
  EXPECT_STREQ(added, "first");
}

} // namespace
