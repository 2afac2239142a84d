#include "testing/LineStarts.h"
#include "tests/pdf_reader/Tokens.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace searchsystem {

namespace {

using namespace std::string_literals;

unsigned char *bytesOf(std::string &text) { return reinterpret_cast<unsigned char *>(text.data()); }
const unsigned char *bytesOf(const std::string &text) {
  return reinterpret_cast<const unsigned char *>(text.data());
}

TEST(LineUtility, FindsTheUsefulPartOfALine) {
  const struct {
    const char *name;
    std::string line, content, withComment;
  } rows[] = {{"trimmed", " /Type /Catalog % c", "/Type /Catalog", "/Type /Catalog % c"},
              {"NUL and tab", "\t\0a\0\t"s, "a", "a"},
              {"percent sign at the end", "a %", "a %", "a %"},
              {"doubled", "a%%b%c", "a%%b", "a%%b%c"},
              {"up to the line end", "a \r\nb", "a", "a"},
              {"nothing", " %", "%", "%"}};
  for (const auto &row : rows) {
    unsigned long start = 0, length = 0;
    EXPECT_EQ(GetLineInfo(bytesOf(row.line), row.line.size(), &start, &length), 1);
    EXPECT_EQ(row.line.substr(start, length), row.content) << row.name;
    EXPECT_EQ(GetLineInfo_WithComment(bytesOf(row.line), row.line.size(), &start, &length), 1);
    EXPECT_EQ(row.line.substr(start, length), row.withComment) << row.name;
  }
}

TEST(LineUtility, WalksOverLines) {
  using Starts = std::vector<unsigned long>;
  const struct {
    std::string text;
    Starts forward, backward;
  } rows[] = {{"a\r\nb\rc\nd", {0, 3, 5, 7}, {7, 5, 3, 0}},
              {"a\r\nb\r\n", {0, 3}, {3, 0}},
              {"a\n\n", {0, 2}, {1, 0}},
              {"a\n\nb", {0, 2, 3}, {3, 1, 0}},
              {"a\r\n\r\nb", {0, 3, 5}, {5, 2, 0}},
              {"\r\nb", {0, 2}, {2, 0}},
              {"\n", {0}, {0}},
              {"\nab", {0, 1}, {0}},
              {"", {}, {}}};
  for (const auto &row : rows) {
    EXPECT_EQ(lineStarts(row.text, LineOrder::Forward), row.forward)
        << testing::PrintToString(row.text);
    EXPECT_EQ(lineStarts(row.text, LineOrder::Backward), row.backward)
        << testing::PrintToString(row.text);
  }
}

TEST(LineUtility, FindsAKeywordAsAWholeWord) {
  const struct {
    const char *name;
    std::string text;
    long line, whole;
  } rows[] = {
      {"first in its line", " key key", 1, 1},      {"last line", "key\nkey\nkex", 0, 4},
      {"part of a word", "/Type/key keys", -1, -1}, {"between form feeds", "a\fkey\fb", 2, 2},
      {"before a comment", "key% key", 0, 0},       {"percent sign at the end", "key%", 0, 0},
      {"in a comment", "%a key", -1, -1},           {"behind a doubled sign", "%% key", 3, 3},
      {"after CR LF", "x\r\nkey\r\n\r\n", -1, 3},   {"empty", "", -1, -1}};
  for (const auto &row : rows) {
    std::string text = row.text;
    const auto *const keyword = reinterpret_cast<const unsigned char *>("key");
    unsigned char *found = nullptr;
    EXPECT_EQ(FindKeyWordLineRev(bytesOf(text), text.size(), keyword, &found), 1);
    EXPECT_EQ(found == nullptr ? -1 : found - bytesOf(text), row.line) << row.name;
    EXPECT_EQ(FindKeyWordRev(bytesOf(text), text.size(), keyword, &found), 1);
    EXPECT_EQ(found == nullptr ? -1 : found - bytesOf(text), row.whole) << row.name;
  }
  EXPECT_EQ(FindKeyWordRev(nullptr, 0, nullptr, nullptr), 0);
}

TEST(LineUtility, ListsTheWordsOfALine) {
  std::string line = "a bc\fd\0e%\rf"s;
  const auto room = std::make_unique<tagFINDINFO[]>((line.size() + 1) / 2 + 1);
  auto *const list = reinterpret_cast<tagFINDINFOLIST *>(room.get());
  EXPECT_EQ(ParseKeyWordItem(bytesOf(line), line.size(), list), 1);
  std::string words;
  for (std::uint32_t i = 0; i < list->count; ++i) {
    const tagFINDINFO &word = (&list->words[0])[i];
    words += std::string(word.word, word.word + word.length) + "|";
  }
  EXPECT_EQ(words, "a|bc|d|e%|");
}

TEST(LineUtility, DecodesHexadecimalStrings) {
  const struct {
    const char *name, *token;
    int result;
    unsigned long size;
    std::string bytes;
  } rows[] = {
      {"upper and lower case", "<48656C6c6F>", 1, 6, "Hello"},
      {"long", "<000102030405060708090A0B0C0D0E0fFF>", 1, 18,
       "\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c\x0d\x0e\x0f\xff"s},
      {"last digit alone", "<41425>", 1, 4, "ABP"},
      {"others are skipped", "<4 1g\n4:2@`/>", 1, 3, "AB"},
      {"others within eight",
       "<41424344 4\x11"
       "54647484A4B>",
       1, 11, "ABCDEFGHJK"},
      {"no digits", "<>", 1, 1, ""},
      {"not closed", "<41", 0, 9, ""},
      {"one bracket", "<", 0, 9, ""},
      {"literal string", "(A)", 0, 9, ""},
  };
  for (const auto &row : rows) {
    const auto *const token = reinterpret_cast<const unsigned char *>(row.token);
    unsigned long size = 9;
    EXPECT_EQ(ConvertStringObjectToString(token, nullptr, &size), row.result) << row.name;
    EXPECT_EQ(size, row.size) << row.name;
    std::string out(size, '?');
    EXPECT_EQ(ConvertStringObjectToString(token, bytesOf(out), &size), row.result) << row.name;
    if (row.result == 1) {
      EXPECT_EQ(out, row.bytes + std::string(out.size() - row.bytes.size(), '\0')) << row.name;
      EXPECT_EQ(size, row.bytes.size()) << row.name;
    }
    for (size = 0; size < row.bytes.size(); ++size) {
      unsigned long done = size;
      std::string part(size + 1, '?');
      EXPECT_EQ(ConvertStringObjectToString(token, bytesOf(part), &done), 1);
      EXPECT_EQ(part, row.bytes.substr(0, size) + "?") << row.name;
      EXPECT_EQ(done, size);
    }
  }
}

TEST(LineUtility, DecodesNothingForNullPointers) {
  std::string token = "<4142>";
  std::string out = "????";
  unsigned long size = 4;
  EXPECT_EQ(ConvertStringObjectToString(nullptr, bytesOf(out), &size), 0);
  EXPECT_EQ(ConvertStringObjectToString(nullptr, nullptr, &size), 0);
  EXPECT_EQ(ConvertStringObjectToString(bytesOf(token), bytesOf(out), nullptr), 0);
  EXPECT_EQ(ConvertStringObjectToString(bytesOf(token), nullptr, nullptr), 0);
  EXPECT_EQ(size, 4UL);
  EXPECT_EQ(out, "????");
}

TEST(LineUtility, MeasuresArrays) {
  const struct {
    const char *tokens;
    int index, length;
  } rows[] = {{"[ 1 [ 2 3 ] 4 ]", 0, 8},
              {"[ 1 [ 2 3 ] 4", 0, 0},
              {"[ 1 [ 2 3 ] 4", 2, 4},
              {"a [ ]", 1, 2},
              {"a [", 1, 0},
              {"a b c", 1, 0},
              {"[ ]", -1, 0},
              {"[ ]", 2, 0}};
  for (const auto &row : rows) {
    CParamArray tokens;
    fill(tokens, row.tokens);
    EXPECT_EQ(GetArrayLength(&tokens, row.index), row.length) << row.tokens << " " << row.index;
  }
  EXPECT_EQ(GetArrayLength(nullptr, 0), 0);
}

} // namespace

} // namespace searchsystem
