#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "platform/metadata/LikePattern.h"
#include "platform/metadata/NSCompoundPredicate.h"

#include <gtest/gtest.h>

namespace {

/// A file that tells its date, and whether it was asked for it.
class File final : public MetadataCandidate {
public:
  explicit File(std::string_view fileName, std::optional<double> changed = {})
      : MetadataCandidate(fileName), date(changed) {}

  std::optional<double> contentChangeDate() noexcept override {
    isAsked = true;
    return date;
  }

  const std::optional<double> date;
  bool isAsked = false;
};

Ref<const NSDate> dateAt(double seconds) {
  return NSDate::dateWithTimeIntervalSinceReferenceDate(seconds);
}

TEST(NSPredicate, LikeMatchesWholeNames) {
  constexpr struct {
    const char *pattern;
    bool regardsCase;
    const char *matching, *other;
  } rows[] = {
      {"*.pdf", false, "a.PdF", "a.pdf.txt"},
      {"*.pdf", true, "a.pdf", "a.PDF"},
      {"*.tif", false, ".tif", "a.tiff"},
      {"*.tif", false, "写真.TIF", "写真tif"},
      {"*.tif", false, "\xff.tif", "\xff"},
      {"*.psk", false, "a.p\xc5\xbfK", "a.p\xc5\xbfk\xcc\x81"},
      {"*.psk", true,
       "a.ps\xe2\x84\xaa"
       "k.psk",
       "a.p\xc5\xbfk"},
      {"*s", false,
       "Stra\xc3\x9f"
       "es",
       "Stra\xc3\x9f"
       "e"},
      {"STRASSE*", false,
       "stra\xc3\x9f"
       "e 1",
       "strase"},
      {"caf\xc3\xa9*", false, "Cafe\xcc\x81 1", "cafe 1"},
      {"*cafe", false, "my CAFE", "my cafe\xcc\x81"},
      {"?.jpg", false, "e\xcc\x81.jpg", ".jpg"},
      {"a?c", false,
       "a\xc3\x9f"
       "c",
       "ac"},
      {"a*b*c", false, "a1b2bc", "a1c2b"},
      {"*ab*ab", false, "xabab", "xab"},
      {"a\\*b\\?\\\\", false, "a*b?\\", "axb?\\"},
      {"*", false, "anything", nullptr},
      {"", false, "", "a"},
  };
  for (const auto &row : rows) {
    const LikePattern pattern(row.pattern, row.regardsCase);
    EXPECT_TRUE(pattern.matches(row.matching)) << row.pattern << " " << row.matching;
    EXPECT_TRUE(row.other == nullptr || !pattern.matches(row.other))
        << row.pattern << " " << row.other;
  }
}

TEST(NSPredicate, InFindsAPartOfTheName) {
  constexpr struct {
    const char *format, *value, *holding, *other;
  } rows[] = {
      {"kMDItemFSName in %@", "abc", "xabcx", "xABCx"},
      {"kMDItemFSName in[c] %@", "abc", "xABCx", "xabx"},
      {"kMDItemFSName in[c] %@", "\xc3\xa9", "E\xcc\x81", "e"},
      {"kMDItemFSName in %@", "\xc3\xa9", "\xc3\xa9", "e\xcc\x81"},
      {"kMDItemFSName in %@", "\xff", "a\xff", "a\xfe"},
      {"kMDItemFSName in %@", "a*", "a*", "ab"},
      {"kMDItemFSName in %@", "", nullptr, "a"},
  };
  for (const auto &row : rows) {
    const auto value = NSString::create(row.value);
    const auto predicate = NSPredicate::predicateWithFormat(row.format, {value.get()});
    ASSERT_TRUE(predicate) << row.format;
    if (row.holding != nullptr) {
      File holding(row.holding);
      EXPECT_TRUE(predicate->evaluateWithObject(holding)) << row.value << " " << row.holding;
    }
    File other(row.other);
    EXPECT_FALSE(predicate->evaluateWithObject(other)) << row.value << " " << row.other;
  }
}

TEST(NSPredicate, DatesAreComparedStrictly) {
  const auto date = dateAt(5);
  const auto later =
      NSPredicate::predicateWithFormat("kMDItemFSContentChangeDate > %@", {date.get()});
  const auto earlier =
      NSPredicate::predicateWithFormat("kMDItemFSContentChangeDate < %@", {date.get()});
  const std::pair<std::optional<double>, int> rows[] = {
      {4.999999, -1}, {5, 0}, {5.000001, 1}, {std::nullopt, 0}};
  for (const auto &[changed, order] : rows) {
    File file("a", changed);
    EXPECT_EQ(later->evaluateWithObject(file), order > 0);
    EXPECT_EQ(earlier->evaluateWithObject(file), order < 0);
  }
}

TEST(NSPredicate, FormatsThatAreNotUnderstood) {
  const auto text = NSString::create("text");
  const auto date = dateAt(0);
  const NSObject *const aText = text.get(), *const aDate = date.get();
  const struct {
    const char *format;
    std::initializer_list<const NSObject *> arguments;
    bool isGood;
  } rows[] = {
      {"kMDItemFSName like[c] '*.pdf'", {}, true},
      {"  kMDItemFSName\tLIKE '*'  ", {}, true},
      {"kMDItemFSName IN[c]'it\\'s'", {}, true},
      {"kMDItemFSName in \"a\"", {}, true},
      {"kMDItemFSName like %@", {aText}, true},
      {"kMDItemFSContentChangeDate>%@", {aDate}, true},
      {"", {}, false},
      {"kMDItemFSName", {}, false},
      {"kMDItemFSNames in %@", {aText}, false},
      {"kMDItemFSName in %@", {}, false},
      {"kMDItemFSName in %@", {aText, aText}, false},
      {"kMDItemFSName in %@", {nullptr}, false},
      {"kMDItemFSName in %@", {aDate}, false},
      {"kMDItemFSName in 'a'", {aText}, false},
      {"kMDItemFSName in 'a", {}, false},
      {"kMDItemFSName in 'a\\", {}, false},
      {"kMDItemFSName in 'a' b", {}, false},
      {"kMDItemFSName in[d] 'a'", {}, false},
      {"kMDItemFSName > %@", {aDate}, false},
      {"kMDItemFSName contains 'a'", {}, false},
      {"kMDItemFSContentChangeDate > %@", {aText}, false},
      {"kMDItemFSContentChangeDate > '2001'", {}, false},
      {"kMDItemFSContentChangeDate in %@", {aDate}, false},
      {"kMDItemFSContentChangeDate >= %@", {aDate}, false},
  };
  for (const auto &row : rows)
    EXPECT_EQ(static_cast<bool>(NSPredicate::predicateWithFormat(row.format, row.arguments)),
              row.isGood)
        << row.format;
}

TEST(NSCompoundPredicate, JoinsAndLooksAtTheDiskLast) {
  const auto date = dateAt(0);
  const auto isLate =
      NSPredicate::predicateWithFormat("kMDItemFSContentChangeDate > %@", {date.get()});
  const auto isA = NSPredicate::predicateWithFormat("kMDItemFSName in 'a'");
  const auto all = NSCompoundPredicate::andPredicateWithSubpredicates({isLate, isA});
  const auto any = NSCompoundPredicate::orPredicateWithSubpredicates({isLate, isA});
  const struct {
    const char *name;
    double changed;
    bool meetsAll, asksForAll, meetsAny, asksForAny;
  } rows[] = {{"a", 1, true, true, true, false},
              {"b", 1, false, false, true, true},
              {"a", -1, false, true, true, false},
              {"b", -1, false, false, false, true}};
  for (const auto &row : rows) {
    File one(row.name, row.changed), other(row.name, row.changed);
    EXPECT_EQ(all->evaluateWithObject(one), row.meetsAll) << row.name << row.changed;
    EXPECT_EQ(one.isAsked, row.asksForAll) << row.name << row.changed;
    EXPECT_EQ(any->evaluateWithObject(other), row.meetsAny) << row.name << row.changed;
    EXPECT_EQ(other.isAsked, row.asksForAny) << row.name << row.changed;
  }
  File file("a");
  EXPECT_TRUE(NSCompoundPredicate::andPredicateWithSubpredicates({})->evaluateWithObject(file));
  EXPECT_FALSE(NSCompoundPredicate::orPredicateWithSubpredicates({})->evaluateWithObject(file));
  EXPECT_FALSE(NSCompoundPredicate::orPredicateWithSubpredicates({isA, nullptr}));
}

} // namespace
