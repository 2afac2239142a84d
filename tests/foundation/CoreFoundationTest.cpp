#include "platform/foundation/CoreFoundation.h"
#include "platform/foundation/Localizations.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <gtest/gtest.h>
#include <utility>

namespace searchsystem {

namespace {

constexpr CFStringEncoding ascii = kCFStringEncodingASCII, latin1 = kCFStringEncodingISOLatin1,
                           utf8 = kCFStringEncodingUTF8;

TEST(CFString, IsMadeFromValidTextAndGivenOutWhereItFits) {
  const struct {
    const char *name, *text;
    CFStringEncoding encoding, encodingOut;
    CFIndex size;
    const char *bytes;
  } rows[] = {
      {"every length", "a\u00e9\u20ac\U0010ffff", utf8, utf8, 11, "a\u00e9\u20ac\U0010ffff"},
      {"above the last code point", "\xf4\x90\x80\x80", utf8, utf8, 8, "none"},
      {"lone continuation", "a\x80", utf8, utf8, 8, "none"},
      {"overlong, three bytes", "\xe0\x80\xaf", utf8, utf8, 8, "none"},
      {"surrogate", "\xed\xa0\x80", utf8, utf8, 8, "none"},
      {"beyond ASCII", "\x80", ascii, utf8, 8, "none"},
      {"unknown encoding", "a", 0x12345, utf8, 8, "none"},
      {"Latin-1", "~\x80\xbf\xc0\xff", latin1, utf8, 10, "~\u0080\u00bf\u00c0\u00ff"},
      {"exact", "abc", utf8, ascii, 4, "abc"},
      {"one too small", "abc", utf8, utf8, 3, "too much"},
      {"negative size", "a", utf8, utf8, -1, "too much"},
      {"shorter in Latin-1", "\u00e9\u00ff", utf8, latin1, 3, "\xe9\xff"},
      {"not in Latin-1", "\u0100", utf8, latin1, 8, "too much"},
      {"not in ASCII", "\u00e9", utf8, ascii, 8, "too much"},
  };
  for (const auto &row : rows) {
    const auto string =
        Ref<const NSString>::adopt(CFStringCreateWithCString(nullptr, row.text, row.encoding));
    char buffer[16] = "too much";
    const bool fits = string && CFStringGetCString(string.get(), buffer, row.size, row.encodingOut);
    EXPECT_STREQ(fits ? buffer : string ? "too much" : "none", row.bytes) << row.name;
  }
  const auto path =
      Ref<const NSString>::adopt(CFStringCreateWithFileSystemRepresentation(nullptr, "/caf\xe9"));
  EXPECT_STREQ(CFStringGetCStringPtr(path.get(), utf8), "/caf\xe9") << "any bytes make a path";
}

TEST(CFString, IsFoundLiterally) {
  const struct {
    const char *name, *string, *sought;
    CFStringCompareFlags options;
    CFIndex location, length;
  } rows[] = {
      {"case", "aBc", "b", 0, kCFNotFound, 0},
      {"any case", "a\u00c9b", "\u00e9B", kCFCompareCaseInsensitive, 1, 3},
      {"base of an accent", "e\u0301", "e", kCFCompareCaseInsensitive, 0, 1},
      {"composed or not", "ae\u0301", "\u00c9", kCFCompareCaseInsensitive | kCFCompareNonliteral, 1,
       3},
      {"nothing", "a", "", 0, kCFNotFound, 0},
  };
  for (const auto &row : rows) {
    const auto string = NSString::create(row.string), sought = NSString::create(row.sought);
    const CFRange range = CFStringFind(string.get(), sought.get(), row.options);
    EXPECT_EQ(std::pair(range.location, range.length), std::pair(row.location, row.length))
        << row.name;
  }
}

TEST(Localizations, FollowTheUsersLocale) {
  const std::vector<std::string_view> all = CFBundleCopyBundleLocalizations();
  const struct {
    const char *name;
    LocaleEnvironment environment;
    std::vector<std::string_view> host, ordered;
  } rows[] = {
      {"nothing set", {"", "", "", ""}, all, {"English"}},
      {"Britain", {"", "", "en_GB.UTF-8@euro", ""}, all, {"Britain", "English"}},
      {"all over messages", {"it_IT", "es_ES", "fr_FR", ""}, all, {"Italian", "English"}},
      {"list first", {"", "", "nl", "fr::en_US:de"}, all, {"French", "English", "German", "Dutch"}},
      {"no name, next preference", {"", "", "pl_PL", "cs:fr"}, all, {"French", "English"}},
      {"host without the language", {"", "", "de_DE", ""}, {"French", "English"}, {"English"}},
      {"host without any", {"", "", "", ""}, {}, {}},
      {"host without English", {"", "", "pl_PL", ""}, {"Dutch", "French"}, {"Dutch"}},
  };
  for (const auto &row : rows) {
    setLocaleEnvironmentForTesting(row.environment);
    EXPECT_EQ(CFBundleCopyLocalizationsForPreferences(row.host), row.ordered) << row.name;
  }
  setLocaleEnvironmentForTesting({});
}

} // namespace

} // namespace searchsystem
