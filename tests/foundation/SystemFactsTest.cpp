#include "platform/foundation/Gestalt.h"
#include "platform/foundation/Localizations.h"
#include "platform/foundation/NSClass.h"
#include "platform/foundation/NSNotificationCenter.h"

#include <gtest/gtest.h>
#include <new>
#include <string>
#include <vector>

namespace {

std::string calls;
NSNotificationCenter &center = NSNotificationCenter::defaultCenter();

void logCall(void *observer, const NSNotification &notification) {
  calls += static_cast<const char *>(observer) + std::string(notification.name) + " ";
}

TEST(NSNotificationCenter, CallsObserversInOrderAndMayBeChangedMeanwhile) {
  char a[] = "a-", b[] = "b-", c[] = "c-";
  const auto post = [](const char *name) {
    calls.clear();
    center.postNotification(name, nullptr);
    return calls;
  };
  center.addObserver(b, logCall, "one");
  center.addObserver(a, logCall, "one");
  center.addObserver(a, logCall, "two");
  EXPECT_EQ(post("one"), "b-one a-one ");
  center.removeObserver(b, "two");
  EXPECT_EQ(post("two"), "a-two ");

  struct Change {
    const char *removed;
    char *added;
  } change{a, c};
  const auto changing = [](void *observer, const NSNotification &notification) {
    const Change &now = *static_cast<Change *>(observer);
    center.removeObserver(now.removed, "two");
    for (int i = 0; i < 50; ++i)
      center.addObserver(now.added, logCall, "two");
    center.removeObserver(observer, "two");
    center.postNotification("one", notification.object);
  };
  center.removeObserver(a, "two");
  center.addObserver(&change, changing, "two");
  center.addObserver(a, logCall, "two");
  center.addObserver(b, logCall, "two");
  EXPECT_EQ(post("two"), "b-one a-one b-two ") << "removed no more, added not yet";
  EXPECT_EQ(post("two").substr(0, 12), "b-two c-two ");
  for (char *const observer : {a, b, c})
    for (const char *const name : {"one", "two"})
      center.removeObserver(observer, name);
  EXPECT_EQ(post("one") + post("two"), "");
}

struct Instance final : NSObject {};
const NSClass known("TestKnownClass",
                    []() -> Ref<NSObject> { return Ref<Instance>::adopt(new Instance); });
const NSClass failing("TestFailingClass", []() -> Ref<NSObject> { throw std::bad_alloc(); });

TEST(NSClass, IsFoundByNameUnlessHidden) {
  EXPECT_TRUE(known.newInstance());
  EXPECT_FALSE(NSClass::named("TestFailingClass")->newInstance());
  EXPECT_EQ(NSClass::named("TestKnown"), nullptr);
  for (const bool isHidden : {true, false}) {
    NSClass::hideForTesting("TestKnownClass", isHidden);
    EXPECT_EQ(NSClass::named("TestKnownClass"), isHidden ? nullptr : &known);
    EXPECT_EQ(NSClass::named("TestFailingClass"), &failing);
  }
}

TEST(Gestalt, TellsTheSystemVersion) {
  std::int32_t real = -1;
  EXPECT_NE(Gestalt(0x73797377, &real), 0);
  EXPECT_EQ(real, -1);
  EXPECT_EQ(Gestalt(gestaltSystemVersion, &real), 0);
  EXPECT_TRUE(real == 0x1040 || real == 0x1058) << real;
  for (const std::int32_t version : {0x1058, 0x1039, 0}) {
    setSystemVersionForTesting(version);
    std::int32_t response = -1;
    EXPECT_EQ(Gestalt(gestaltSystemVersion, &response), 0);
    EXPECT_EQ(response, version == 0 ? real : version);
  }
}

TEST(Localizations, FollowTheUsersLocale) {
  const std::vector<std::string_view> all = CFBundleCopyBundleLocalizations();
  EXPECT_EQ(all.size(), 8U);
  const struct {
    const char *name;
    LocaleEnvironment environment;
    std::vector<std::string_view> host, ordered;
  } rows[] = {
      {"nothing set", {"", "", "", ""}, all, {"English"}},
      {"C with an encoding", {"C.UTF-8", "", "de_DE", "fr"}, all, {"English"}},
      {"POSIX", {"", "POSIX", "ja_JP", "ja"}, all, {"English"}},
      {"Japanese", {"", "", "ja_JP.UTF-8", ""}, all, {"Japanese", "English"}},
      {"Britain", {"", "", "en_GB.UTF-8@euro", ""}, all, {"Britain", "English"}},
      {"Austria", {"", "", "de_AT@euro", ""}, all, {"German", "English"}},
      {"all over messages", {"it_IT", "es_ES", "fr_FR", ""}, all, {"Italian", "English"}},
      {"messages over lang", {"", "es_ES", "fr_FR", ""}, all, {"Spanish", "English"}},
      {"list first", {"", "", "nl", "fr:en_US:de"}, all, {"French", "English", "German", "Dutch"}},
      {"list with gaps", {"", "", "de_DE", ":fr::de:"}, all, {"French", "German", "English"}},
      {"list without a locale", {"", "", "", "fr"}, all, {"English"}},
      {"no name of its own", {"", "", "pl_PL.UTF-8", ""}, all, {"English"}},
      {"no name, next preference", {"", "", "pl_PL", "cs:fr"}, all, {"French", "English"}},
      {"host without the language", {"", "", "de_DE", ""}, {"French", "English"}, {"English"}},
      {"host without English", {"", "", "pl_PL", ""}, {"Dutch", "French"}, {"Dutch"}},
      {"host with nothing", {"", "", "fr_FR", ""}, {}, {}},
  };
  for (const auto &row : rows) {
    setLocaleEnvironmentForTesting(&row.environment);
    EXPECT_EQ(CFBundleCopyLocalizationsForPreferences(row.host), row.ordered) << row.name;
  }
  setLocaleEnvironmentForTesting(nullptr);
}

} // namespace
