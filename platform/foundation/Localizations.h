#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// The languages of a host's texts, by the names that hosts use.

/// The values of LC_ALL, LC_MESSAGES, LANG and LANGUAGE; empty if unset.
struct LocaleEnvironment {
  std::string all;
  std::string messages;
  std::string lang;
  std::string language;
};

/// All localizations of the host. Throws `std::bad_alloc`.
[[nodiscard]] std::vector<std::string_view> CFBundleCopyBundleLocalizations();

/// The `localizations` that the user prefers, in order. English, the development language, is last,
/// or the first of the list if it lacks English and nothing else fits. Throws `std::bad_alloc`.
[[nodiscard]] std::vector<std::string_view>
CFBundleCopyLocalizationsForPreferences(const std::vector<std::string_view> &localizations);

/// Replaces the environment, which is otherwise read once. Main thread.
void setLocaleEnvironmentForTesting(LocaleEnvironment replacement);

} // namespace searchsystem
