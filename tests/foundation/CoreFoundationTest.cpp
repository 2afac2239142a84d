#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>
#include <vector>

/// Uses the headers as a host written in C does; see CHost.c.
extern "C" const char *textThroughC(const char *text, char *buffer, CFIndex size);

namespace {

constexpr CFStringEncoding ascii = kCFStringEncodingASCII;
constexpr CFStringEncoding latin1 = kCFStringEncodingISOLatin1;
constexpr CFStringEncoding utf8 = kCFStringEncodingUTF8;

Ref<const NSString> stringOf(const char *text, CFStringEncoding encoding) {
  return Ref<const NSString>::adopt(CFStringCreateWithCString(nullptr, text, encoding));
}

std::string bytesOf(const Ref<const NSString> &string) {
  return string ? std::string(string->view()) : "NULL";
}

TEST(CFString, IsMadeFromValidTextOnly) {
  const struct {
    const char *name, *bytes;
    CFStringEncoding encoding;
    const char *text;
  } rows[] = {
      {"empty", "", utf8, ""},
      {"every length", "a\u00e9\u20ac\U0001f600", utf8, "a\u00e9\u20ac\U0001f600"},
      {"last code point", "\xf4\x8f\xbf\xbf", utf8, "\xf4\x8f\xbf\xbf"},
      {"above it", "\xf4\x90\x80\x80", utf8, "NULL"},
      {"lone continuation", "a\x80", utf8, "NULL"},
      {"cut off", "\xe2\x82", utf8, "NULL"},
      {"overlong", "\xc0\xaf", utf8, "NULL"},
      {"overlong, three bytes", "\xe0\x80\xaf", utf8, "NULL"},
      {"surrogate", "\xed\xa0\x80", utf8, "NULL"},
      {"never a byte", "\xff", utf8, "NULL"},
      {"unknown encoding", "a", 0x12345, "NULL"},
      {"no text", nullptr, utf8, "NULL"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(bytesOf(stringOf(row.bytes, row.encoding)), row.text) << row.name;
  for (int byte = 1; byte < 256; ++byte) {
    const char bytes[] = {static_cast<char>(byte), '\0'};
    const auto string = stringOf(bytes, latin1);
    const std::string encoded = byte < 0x80 ? std::string(bytes)
                                            : std::string{static_cast<char>(0xc0 | byte >> 6),
                                                          static_cast<char>(0x80 | (byte & 0x3f))};
    EXPECT_EQ(bytesOf(string), encoded) << byte;
    EXPECT_EQ(bytesOf(stringOf(bytes, ascii)), byte < 0x80 ? bytes : "NULL") << byte;
    char back[2] = {};
    EXPECT_TRUE(CFStringGetCString(string.get(), back, sizeof back, latin1)) << byte;
    EXPECT_STREQ(back, bytes);
  }
  const auto path =
      Ref<const NSString>::adopt(CFStringCreateWithFileSystemRepresentation(nullptr, "/caf\xe9"));
  EXPECT_EQ(bytesOf(path), "/caf\xe9");
  EXPECT_EQ(CFStringCreateWithFileSystemRepresentation(nullptr, nullptr), nullptr);
}

TEST(CFString, IsGivenOutWhereItFits) {
  const auto path = [](const char *bytes) {
    return Ref<const NSString>::adopt(CFStringCreateWithFileSystemRepresentation(nullptr, bytes));
  };
  const struct {
    const char *name, *text;
    CFStringEncoding encoding;
    CFIndex size;
    const char *bytes;
    bool isStored;
  } rows[] = {
      {"exact", "abc", utf8, 4, "abc", true},
      {"one too small", "abc", utf8, 3, "no", true},
      {"nothing", "", ascii, 1, "", true},
      {"no room for the end", "", ascii, 0, "no", true},
      {"negative size", "a", utf8, -1, "no", true},
      {"shorter in Latin-1", "\u00e9", latin1, 2, "\xe9", false},
      {"beyond Latin-1", "\u0100", latin1, 8, "no", false},
      {"beyond ASCII", "\u00e9", ascii, 8, "no", false},
      {"bytes of a path", "caf\xe9", utf8, 5, "caf\xe9", true},
      {"unknown encoding", "a", 0x12345, 8, "no", false},
  };
  for (const auto &row : rows) {
    const auto string = path(row.text);
    std::vector<char> buffer(static_cast<std::size_t>(std::max(row.size, 1L)));
    const bool isGiven =
        CFStringGetCString(string.get(), buffer.data(), row.size, row.encoding) != 0;
    EXPECT_EQ(isGiven ? buffer.data() : std::string("no"), row.bytes) << row.name;
    EXPECT_EQ(CFStringGetCStringPtr(string.get(), row.encoding),
              row.isStored ? string->UTF8String() : nullptr)
        << row.name;
  }
  char buffer[8];
  EXPECT_FALSE(CFStringGetCString(nullptr, buffer, sizeof buffer, utf8));
  EXPECT_FALSE(CFStringGetCString(path("a").get(), nullptr, 4, utf8));
  EXPECT_EQ(CFStringGetCStringPtr(nullptr, utf8), nullptr);
  EXPECT_STREQ(textThroughC("from C", buffer, sizeof buffer), "from C");
}

std::string events;

/// An object that tells when it goes.
struct Mortal final : NSObject {
  ~Mortal() override { events += "gone "; }
};

TEST(CFArray, KeepsItsElements) {
  events.clear();
  const void *values[] = {new Mortal, nullptr};
  const CFArrayRef array = CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks);
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(array->count(), 1U);
  EXPECT_EQ(array->objectAtIndex(0), values[0]);
  EXPECT_EQ(CFArrayCreate(nullptr, values, 2, nullptr), nullptr) << "null element";
  EXPECT_EQ(CFArrayCreate(nullptr, values, -1, nullptr), nullptr);
  EXPECT_EQ(CFArrayCreate(nullptr, values, LONG_MAX, nullptr), nullptr) << "memory is short";
  EXPECT_EQ(CFArrayCreate(nullptr, nullptr, 1, nullptr), nullptr);
  CFRelease(values[0]);
  EXPECT_EQ(events, "");
  CFRelease(CFRetain(array));
  CFRelease(array);
  EXPECT_EQ(events, "gone ");

  const auto empty = Ref<const NSArray>::adopt(CFArrayCreate(nullptr, nullptr, 0, nullptr));
  EXPECT_EQ(empty->count(), 0U) << "an empty list is no missing list";
  CFRelease(CFRetain(nullptr));
}

/// A counted object that logs its counting.
struct Logged {
  explicit Logged(char name) : name_(name) {}
  void retain() const { events += std::string("+") + name_ + " "; }
  void release() const {
    events += std::string("-") + name_ + " ";
    if (slot != nullptr)
      events += *slot ? std::string("(") + (*slot)->name_ + ") " : "(empty) ";
  }
  const char name_;
  /// What the release looks at, as a destructor may.
  const Ref<Logged> *slot = nullptr;
};

TEST(Ref, CountsAsTheEventLogSays) {
  Logged a('a'), b('b');
  const auto log = [&](auto action) {
    events.clear();
    {
      Ref<Logged> x(&a), y(&b);
      events += "| ";
      action(x, y);
      events += "| ";
      a.slot = b.slot = nullptr;
    }
    return events;
  };
  using R = Ref<Logged>;
  EXPECT_EQ(log([](R &x, R &y) { x = y; }), "+a +b | +b -a | -b -b ");
  EXPECT_EQ(log([](R &x, R &) { x = *&x; }), "+a +b | +a -a | -b -a ");
  EXPECT_EQ(log([](R &x, R &) { x = std::move(*&x); }), "+a +b | | -b -a ");
  EXPECT_EQ(log([](R &x, R &y) { x = std::move(y); }), "+a +b | -a | -b ");
  EXPECT_EQ(log([](R &x, R &) { R z(x), w(std::move(z)); }), "+a +b | +a -a | -b -a ");
  EXPECT_EQ(log([](R &x, R &) { Ref<const Logged> z = x; }), "+a +b | +a -a | -b -a ");
  EXPECT_EQ(log([](R &x, R &) { R::adopt(x.leak()); }), "+a +b | -a | -b ");
  EXPECT_EQ(log([&](R &x, R &y) { a.slot = &x, x = y; }), "+a +b | +b -a (b) | -b -b ");
  EXPECT_EQ(log([&](R &x, R &) { a.slot = &x, x = nullptr; }), "+a +b | -a (empty) | -b ");
}

TEST(NSDate, CutsFileTimesToMicroseconds) {
  constexpr std::int64_t epoch = NSDate::secondsFrom1970To2001;
  const struct {
    const char *name;
    std::int64_t seconds;
    std::uint32_t nanoseconds;
    double interval;
  } rows[] = {{"below a microsecond", epoch, 999, 0},
              {"a microsecond", epoch, 1000, 1e-6},
              {"last moment of a second", epoch, 999'999'999, 0.999999},
              {"before 2001", epoch - 1, 999'999'999, -1 + 0.999999},
              {"1970", 0, 0, -978'307'200.0},
              {"before 1970", -1, 999'000'999, -978'307'201 + 0.999},
              {"far away", std::int64_t{1} << 40, 1, 1'098'533'320'576.0}};
  for (const auto &row : rows)
    EXPECT_EQ(NSDate::intervalOfFileTime(row.seconds, row.nanoseconds), row.interval) << row.name;
}

TEST(NSDate, ComparesMoments) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    double a, b;
    NSComparisonResult order;
  } rows[] = {{1, 2, NSOrderedAscending},     {2, 1, NSOrderedDescending}, {1, 1, NSOrderedSame},
              {-0.0, 0.0, NSOrderedSame},     {nan, 1, NSOrderedSame},     {1, nan, NSOrderedSame},
              {-1e300, 0, NSOrderedAscending}};
  for (const auto &row : rows) {
    const auto a = Ref<const NSDate>::adopt(CFDateCreate(nullptr, row.a));
    EXPECT_EQ(a->compare(*NSDate::dateWithTimeIntervalSinceReferenceDate(row.b)), row.order)
        << row.a << " and " << row.b;
  }
}

} // namespace
