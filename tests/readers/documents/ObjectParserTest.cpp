#include "readers/documents/ObjectParser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace searchsystem {
namespace {

using Kind = Object::Kind;

std::string shown(const Object &object) {
  switch (object.kind()) {
  case Kind::null:
    return "null";
  case Kind::boolean:
    return object.boolean() ? "true" : "false";
  case Kind::integer:
    return std::to_string(object.integer());
  case Kind::real:
    return "~" + std::to_string(std::llround(object.number() * 1000));
  case Kind::string:
    return "(" + std::string(object.bytes()) + ")";
  case Kind::name:
    return "/" + std::string(object.bytes());
  case Kind::array: {
    std::string text = "[";
    for (const Object &item : object.array())
      text += shown(item) + " ";
    return text + "]";
  }
  case Kind::dictionary: {
    std::string text = "<";
    for (const DictionaryEntry &entry : object.dictionary().entries())
      text += std::string(entry.key) + "=" + shown(entry.value) + " ";
    return text + ">";
  }
  case Kind::reference:
    return std::to_string(object.reference().number) + "." +
           std::to_string(object.reference().generation);
  case Kind::keyword:
    return std::string(object.bytes());
  case Kind::stream:
  case Kind::end:
  case Kind::incomplete:
    break;
  }
  return "?";
}

std::string parsed(std::string_view text, ObjectParser::Syntax syntax) {
  Arena arena;
  ObjectParser parser(arena, syntax);
  parser.reset(text);
  std::string all;
  for (Object object = parser.next(); object.kind() != Kind::end; object = parser.next())
    all += (all.empty() ? "" : " ") + shown(object);
  return all;
}

struct Row {
  std::string name;
  std::string text;
  std::string objects;
  ObjectParser::Syntax syntax = ObjectParser::Syntax::objects;
};

void PrintTo(const Row &row, std::ostream *out) { *out << row.name; }

class ObjectParserTest : public testing::TestWithParam<Row> {};

TEST_P(ObjectParserTest, Parses) {
  EXPECT_EQ(parsed(GetParam().text, GetParam().syntax), GetParam().objects);
}

constexpr auto content = ObjectParser::Syntax::content;

INSTANTIATE_TEST_SUITE_P(
    Rows, ObjectParserTest,
    testing::Values(
        Row{"Numbers", "0 +17 -98 34.5 -3.62 4. -.002 007", "0 17 -98 ~34500 ~-3620 ~4000 ~-2 7"},
        Row{"NumbersThatNoStandardKnows", "--5 5-3 1.2.3 - . 2e-1", "-5 5 ~1200 0 ~0 ~200"},
        Row{"Strings", "(a(b)c) () (\\(\\\\\\n\\101\\7z\\q) (x\\\r\ny) (l\r\nm\rn)",
            "(a(b)c) () ((\\\nA\7zq) (xy) (l\nm\nn)"},
        Row{"HexStrings", "<48 65\n6C6c 6> <> <4x8>", "(Hell`) () (H)"},
        Row{"Names", "/A#20B /a;b /#4 / /Lime#zz", "/A B /a;b /#4 / /Lime#zz"},
        Row{"References", "1 0 R 1 0 RG 1 0R 12 3 4 0 R 4294967296 0 R -1 0 R",
            "1.0 1 0 RG 1.0 12 3 4.0"
            " 4294967296 0 R -1 0 R"},
        Row{"Containers", "[1[/a(b)]<</c[3 0 R]/d<</e null>>>>true]",
            "[1 [/a (b) ] <c=[3.0 ] d=<e=null > > true ]"},
        Row{"Comments", "[1 % ] 2\r2 %\n]%", "[1 2 ]"},
        Row{"GluedDelimiters", "[3 0 R]/a<</b/c>>(d)<65>7/e", "[3.0 ] /a <b=/c > (d) (e) 7 /e"},
        Row{"ClosersThatOpenNothing", "] 1 >> ) 2 } >", "1 2"},
        Row{"ArrayThatADictionaryEnds", "<</a [1 2 >> 3", "<a=[1 2 ] > 3"},
        Row{"NothingCloses", "<</a [1 (b", "<a=[1 (b) ] >"},
        Row{"EndOfObjectCloses", "<</a [1 endobj 5", "<a=[1 ] > endobj 5"},
        Row{"ValuesThatAreNoKeys", "<</a 1 2 (x) /b 3>>", "<a=1 b=3 >"},
        Row{"Operators", "BT/F1 12 Tf[(a)-20(b)]TJ T*(c)' 1 0 R 0 0 1 rg1 w",
            "BT /F1 12 Tf [(a) -20 (b) ] TJ T* (c) ' 1 0 R 0 0 1 rg1 w", content},
        Row{"OperatorEndsArray", "[(a) Tj (b) Tj", "[(a) ] Tj (b) Tj", content}),
    [](const auto &tested) { return tested.param.name; });

TEST(ObjectParserNestingTest, IsBounded) {
  const std::string text = std::string(100000, '[') + "1" + std::string(100000, ']');
  EXPECT_EQ(parsed(text, ObjectParser::Syntax::objects).substr(0, 3), "[[[");
  EXPECT_EQ(parsed("<</a" + text, content).substr(0, 3), "<a=");
}

TEST(ObjectParserDictionaryTest, FindsTheLastOfEqualKeys) {
  for (const int count : {5, 100}) {
    std::string text = "<<";
    for (int i = 0; i < count; ++i)
      text += "/k" + std::to_string(i % 50) + " " + std::to_string(i);
    Arena arena;
    ObjectParser parser(arena, ObjectParser::Syntax::objects);
    parser.reset(text.append(">>"));
    const Object object = parser.next();
    for (int i = 0; i < 50; ++i) {
      const int last = count == 5 ? (i < 5 ? i : -1) : 50 + i;
      EXPECT_EQ(object.dictionary().get("k" + std::to_string(i)).integer(-1), last) << i;
    }
  }
}

// Wherever a piece ends, the objects are those of the whole.
TEST(ObjectParserPiecesTest, GivesTheSame) {
  const std::string text = "q [(a\\)) -5.5]TJ<</A/B#41>>DP<4142>Tj 12 34 Td%x\n/N 1.5e2 EMC ";
  const std::string whole = parsed(text, content);
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    Arena arena;
    ObjectParser parser(arena, content);
    parser.reset(std::string_view(text).substr(0, cut), ObjectParser::Bytes::moreToCome);
    std::string all;
    for (Object object = parser.next(); object.kind() != Kind::end; object = parser.next()) {
      if (object.kind() == Kind::incomplete) {
        const std::size_t kept = parser.position();
        parser.reset(std::string_view(text).substr(kept));
        continue;
      }
      all += (all.empty() ? "" : " ") + shown(object);
    }
    EXPECT_EQ(all, whole) << cut;
  }
}

} // namespace
} // namespace searchsystem
