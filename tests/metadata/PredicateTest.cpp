#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "platform/metadata/LikePattern.h"
#include "platform/metadata/NSCompoundPredicate.h"

#include <gtest/gtest.h>

namespace searchsystem {

namespace {

/// A file with a date, which notes whether the date was read.
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

/// The condition that a file was changed after (">") or before ("<") a date.
Ref<const NSPredicate> isChanged(const std::string &order, double seconds) {
  const auto date = NSDate::dateWithTimeIntervalSinceReferenceDate(seconds);
  return NSPredicate::predicateWithFormat("kMDItemFSContentChangeDate" + order + "%@",
                                          {date.get()});
}

TEST(NSPredicate, LooksAtWholeNamesOrAtParts) {
  constexpr struct {
    const char *condition, *value, *matching, *other;
  } rows[] = {{"like[c]", "*.pdf", "a.PdF", "a.pdf.txt"},
              {"like", "*.pdf", "a.pdf", "a.PDF"},
              {"like[c]", "*.tif", ".tif", "a.tiff"},
              {"like[c]", "*.tif", "写真.TIF", "写真tif"},
              {"like[c]", "*.tif", "\xff.tif", "\xff"},
              {"like[c]", "*.psk", "a.pſK", "a.pſk\u0301"},
              {"like", "*.psk", "a.ps\u212ak.psk", "a.pſk"},
              {"like[c]", "*s", "Straßes", "Straße"},
              {"like[c]", "STRASSE*", "straße 1", "strase"},
              {"like[c]", "café*", "Cafe\u0301 1", "cafe 1"},
              {"like[c]", "*cafe", "my CAFE", "my cafe\u0301"},
              {"like[c]", "?.jpg", "e\u0301.jpg", ".jpg"},
              {"like[c]", "a?c", "aßc", "ac"},
              {"like[c]", "a*b*c", "a1b2bc", "a1c2b"},
              {"like[c]", "*ab*ab", "xabab", "xab"},
              {"like[c]", "a\\*b\\?\\\\", "a*b?\\", "axb?\\"},
              {"like[c]", "*", "anything", nullptr},
              {"like[c]", "", "", "a"},
              {"in", "abc", "xabcx", "xABCx"},
              {"in[c]", "abc", "xABCx", "xabx"},
              {"in[c]", "é", "E\u0301", "e"},
              {"in", "é", "é", "e\u0301"},
              {"in", "\xff", "a\xff", "a\xfe"},
              {"in", "a*", "a*", "ab"},
              {"in", "", nullptr, "a"}};
  for (const auto &[condition, value, matching, other] : rows) {
    const auto text = NSString::create(value);
    const auto predicate = NSPredicate::predicateWithFormat(
        "kMDItemFSName " + std::string(condition) + " %@", {text.get()});
    ASSERT_TRUE(predicate) << condition;
    File meets(matching != nullptr ? matching : ""), fails(other != nullptr ? other : "");
    EXPECT_TRUE(matching == nullptr || predicate->evaluateWithObject(meets)) << value << matching;
    EXPECT_TRUE(other == nullptr || !predicate->evaluateWithObject(fails)) << value << other;
  }
}

TEST(NSPredicate, DatesAreComparedStrictly) {
  const auto later = isChanged(" > ", 5), earlier = isChanged(" < ", 5);
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
  const auto date = NSDate::dateWithTimeIntervalSinceReferenceDate(0);
  const NSObject *const aText = text.get(), *const aDate = date.get();
  const struct {
    const char *format;
    std::initializer_list<const NSObject *> arguments;
    bool isGood;
  } rows[] = {{"kMDItemFSName like[c] '*.pdf'", {}, true},
              {"  kMDItemFSName\tLIKE '*'  ", {}, true},
              {"kMDItemFSName IN[c]\"it's\"", {}, true},
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
              {"kMDItemFSName in 'it's'", {}, false},
              {"kMDItemFSName in 'a' b", {}, false},
              {"kMDItemFSName in[d] 'a'", {}, false},
              {"kMDItemFSName > %@", {aDate}, false},
              {"kMDItemFSName contains 'a'", {}, false},
              {"kMDItemFSContentChangeDate > %@", {aText}, false},
              {"kMDItemFSContentChangeDate > '2001'", {}, false},
              {"kMDItemFSContentChangeDate in %@", {aDate}, false},
              {"kMDItemFSContentChangeDate >= %@", {aDate}, false}};
  for (const auto &row : rows)
    EXPECT_EQ(static_cast<bool>(NSPredicate::predicateWithFormat(row.format, row.arguments)),
              row.isGood)
        << row.format;
}

TEST(NSCompoundPredicate, JoinsAndLooksAtTheDiskLast) {
  const auto isLate = isChanged(" > ", 0);
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

} // namespace searchsystem
