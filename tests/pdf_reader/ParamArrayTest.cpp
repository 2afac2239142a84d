#include "pdf_reader/CParamArray.h"
#include "tests/pdf_reader/Tokens.h"

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HAS_ALLOCATOR_OF_SANITIZER 1
#else
#define HAS_ALLOCATOR_OF_SANITIZER 0
#endif

/// How many more blocks can be had; none fails if negative.
static int blocksLeft = -1;

#if !HAS_ALLOCATOR_OF_SANITIZER
extern "C" {
void *__libc_realloc(void *block, std::size_t size);

void *realloc(void *block, std::size_t size) noexcept {
  if (blocksLeft == 0)
    return nullptr;
  blocksLeft -= blocksLeft > 0 ? 1 : 0;
  return __libc_realloc(block, size);
}
}
#endif

namespace searchsystem {

namespace {

using namespace std::string_literals;

TEST(ParamArray, IsEmptyWhenMemoryIsShortForAnObject) {
  if (HAS_ALLOCATOR_OF_SANITIZER != 0)
    GTEST_SKIP() << "no block can be refused";
  const std::string text =
      "<< a\n" + std::string(3000, 'b') + "\n" + std::string(9000, 'c') + " >>\n";
  int result = 0;
  for (int blocks = 0; result == 0 && blocks < 100; ++blocks) {
    CParamArray tokens;
    blocksLeft = blocks;
    result = tokens.ParseObject(text.data(), text.size(), "<<", ">>");
    blocksLeft = -1;
    EXPECT_EQ(tokens.GetCount(), result == 1 ? 5UL : 0UL) << blocks;
  }
  EXPECT_EQ(result, 1);
}

TEST(ParamArray, CutsALineIntoTokens) {
  const struct {
    const char *name;
    std::string line, tokens, withComment;
  } rows[] = {
      {"blanks separate", "1 0 obj", "1|0|obj", "1|0|obj"},
      {"brackets do not", "<</Type/Pages 2 0 R>>", "<</Type/Pages|2|0|R>>",
       "<</Type/Pages|2|0|R>>"},
      {"tab and NUL", "\ta\0b "s, "a|b", "a|b"},
      {"form feed is text", "a\fb c", "a\fb|c", "a\fb|c"},
      {"first line only", "a b\rc", "a|b", "a|b"},
      {"comment", "a %b c", "a", "a|%b|c"},
      {"comment alone", "% x", "", "%|x"},
      {"doubled percent sign", "a%%b %%", "a%%b|%%", "a%%b|%%"},
      {"percent sign at the end", "a %", "a|%", "a|%"},
      {"odd percent signs", "%%%x", "%%", "%%%x"},
      {"empty", "", "", ""},
      {"blanks alone", " \t ", "", ""},
  };
  for (const auto &row : rows) {
    CParamArray tokens;
    tokens.AddParam("old");
    EXPECT_EQ(tokens.Parse(row.line.data(), row.line.size()), row.tokens.empty() ? 0 : 1)
        << row.name;
    EXPECT_EQ(joined(tokens), row.tokens) << row.name;
    tokens.Parse_WithComment(row.line.data(), row.line.size());
    EXPECT_EQ(joined(tokens), row.withComment) << row.name;
  }
}

TEST(ParamArray, ChangesTokens) {
  CParamArray other;
  fill(other, "x y z");
  const struct {
    const char *name;
    std::function<int(CParamArray &)> change;
    int result;
    std::string tokens;
  } rows[] = {
      {"append", [](auto &a) { return a.AddParam("f"); }, 1, "a|b|c|d|e|f"},
      {"append the empty text", [](auto &a) { return a.AddParam(""); }, 1, "a|b|c|d|e|"},
      {"append itself", [](auto &a) { return a.AddParam(&a); }, 1, "a|b|c|d|e|a|b|c|d|e"},
      {"append an array", [&](auto &a) { return a.AddParam(&other); }, 1, "a|b|c|d|e|x|y|z"},
      {"append an own text", [](auto &a) { return a.AddParam(a.GetParam(1)); }, 1, "a|b|c|d|e|b"},
      {"insert in front", [](auto &a) { return a.InsertParam(0, "f"); }, 1, "f|a|b|c|d|e"},
      {"insert behind", [](auto &a) { return a.InsertParam(5, "f"); }, 1, "a|b|c|d|e|f"},
      {"insert too far", [](auto &a) { return a.InsertParam(6, "f"); }, 0, "a|b|c|d|e"},
      {"replace", [](auto &a) { return a.SetParam(1, "longer"); }, 1, "a|longer|c|d|e"},
      {"replace none", [](auto &a) { return a.SetParam(5, "f"); }, 0, "a|b|c|d|e"},
      {"delete in front", [](auto &a) { return a.DeleteParam(0, 2); }, 1, "c|d|e"},
      {"delete within", [](auto &a) { return a.DeleteParam(1, 2); }, 1, "a|d|e"},
      {"delete too many", [](auto &a) { return a.DeleteParam(1, 100); }, 1, "a"},
      {"delete all", [](auto &a) { return a.DeleteParam(0, 5); }, 1, ""},
      {"delete nothing", [](auto &a) { return a.DeleteParam(2, 0); }, 1, "a|b|c|d|e"},
      {"delete none", [](auto &a) { return a.DeleteParam(5, 1); }, 0, "a|b|c|d|e"},
      {"copy to the end", [&](auto &a) { return a.CopyParam(&other, 1, -1); }, 1, "y|z"},
      {"copy too many", [&](auto &a) { return a.CopyParam(&other, 2, 7); }, 1, "z"},
      {"copy nothing", [&](auto &a) { return a.CopyParam(&other, 9, 0); }, 1, ""},
      {"copy none", [&](auto &a) { return a.CopyParam(&other, 3, 1); }, 0, ""},
      {"copy itself, released first", [](auto &a) { return a.CopyParam(&a, 0, 1); }, 0, ""}};
  for (const auto &row : rows) {
    CParamArray tokens;
    fill(tokens, "a b c d e");
    EXPECT_EQ(row.change(tokens), row.result) << row.name;
    EXPECT_EQ(joined(tokens), row.tokens) << row.name;
  }
}

TEST(ParamArray, FindsAndCompares) {
  CParamArray tokens;
  fill(tokens, "2 0 R 5 0 R");
  EXPECT_EQ(tokens.FindParam("R", 0), 2UL);
  EXPECT_EQ(tokens.FindParam("R", 3), 5UL);
  EXPECT_EQ(tokens.FindParam("R", 6), CParamArray::notFound);
  EXPECT_EQ(tokens.FindParam(nullptr, 0), CParamArray::notFound);
  EXPECT_EQ(tokens.Compare(2, "R"), 1);
  EXPECT_EQ(tokens.Compare(2, "r"), 0);
  EXPECT_EQ(tokens.Compare(6, "R"), 0);
  EXPECT_EQ(tokens.Compare(2U, "R"), 1);
  EXPECT_EQ(tokens.Compare(-1, "R"), 0);
  EXPECT_EQ(CParamArray::Compare("R", nullptr), 0);
  EXPECT_EQ(tokens.GetParam(6), nullptr);
}

TEST(ParamArray, TellsTokensWithoutTextFromOthers) {
  CParamArray tokens;
  fill(tokens, "a b");
  EXPECT_EQ(tokens.SetParam(1, ""), 1);
  EXPECT_EQ(tokens.GetParam(1), nullptr);
  EXPECT_EQ(tokens.Compare(1, ""), 0);
  EXPECT_EQ(tokens.FindParam("", 0), CParamArray::notFound);
  CParamArray copy;
  EXPECT_EQ(copy.CopyParam(&tokens, 0, 2), 1);
  EXPECT_EQ(copy.GetCount(), 2UL);
  EXPECT_EQ(copy.SetParam(1, "c"), 0) << "place left empty";
  EXPECT_EQ(tokens.SetParam(1, "c"), 1) << "token of no length";
  EXPECT_EQ(tokens.AddParam(&copy), 0) << "stops at the empty place";
  EXPECT_EQ(joined(tokens), "a|c|a");
}

TEST(ParamArray, TakesAnObjectOfSeveralLines) {
  const struct {
    const char *name, *text, *tokens;
  } rows[] = {{"both markers", "a\nb << c\nd >> e", "a|<<|c|d|>>"},
              {"first end counts", "<< a << b >> c >>", "<<|a|<<|b|>>"},
              {"no end", "x\r\n<< a\r\n\r\nb", "x|<<|a|b"},
              {"no begin", "a >> b", "a|>>|b"}};
  for (const auto &row : rows) {
    CParamArray tokens;
    EXPECT_EQ(tokens.ParseObject(row.text, std::string(row.text).size(), "<<", ">>"), 1)
        << row.name;
    EXPECT_EQ(joined(tokens), row.tokens) << row.name;
  }
}

TEST(ParamArray, KeepsItsTokensThroughAnyOrderOfChanges) {
  CParamArray tokens;
  std::vector<std::string> expected;
  for (unsigned i = 0; i < 20'000; ++i) {
    const std::string text(i * 7 % 23, static_cast<char>('a' + i % 26));
    const unsigned long place = expected.empty() ? 0 : i * 31 % expected.size();
    const auto at = expected.begin() + static_cast<std::ptrdiff_t>(place);
    if (i % 5 == 4 && expected.size() > 12) {
      EXPECT_EQ(tokens.DeleteParam(place, 1), 1);
      expected.erase(at);
    } else if (i % 5 == 3) {
      EXPECT_EQ(tokens.SetParam(place, text.c_str()), 1);
      *at = text;
    } else if (expected.size() < 40) {
      EXPECT_EQ(tokens.InsertParam(place, text.c_str()), 1);
      expected.insert(at, text);
    } else {
      EXPECT_EQ(tokens.DeleteParam(0, 20), 1);
      expected.erase(expected.begin(), expected.begin() + 20);
    }
  }
  ASSERT_EQ(tokens.GetCount(), expected.size());
  for (unsigned long i = 0; i < expected.size(); ++i)
    EXPECT_EQ(tokens.token(i), expected[i]);
}

} // namespace

} // namespace searchsystem
