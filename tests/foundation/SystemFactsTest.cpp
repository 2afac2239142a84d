#include "platform/foundation/Localizations.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

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
      {"host without English", {"", "", "pl_PL", ""}, {"Dutch", "French"}, {"Dutch"}},
  };
  for (const auto &row : rows) {
    setLocaleEnvironmentForTesting(&row.environment);
    EXPECT_EQ(CFBundleCopyLocalizationsForPreferences(row.host), row.ordered) << row.name;
  }
  setLocaleEnvironmentForTesting(nullptr);
}

} // namespace
