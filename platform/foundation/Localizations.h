#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The languages that a host has texts for, by the names that hosts give them.

/// What LC_ALL, LC_MESSAGES, LANG and LANGUAGE, in this order, say about the user's language;
/// empty where one is not set.
struct LocaleEnvironment {
  std::string all;
  std::string messages;
  std::string lang;
  std::string language;
};

/// All localizations of the host. Throws `std::bad_alloc`.
[[nodiscard]] std::vector<std::string_view> CFBundleCopyBundleLocalizations();

/// Those of `localizations` that the user prefers, the most wanted first. At the end stands
/// English, in which hosts are developed, or the first of the list if that lacks it and nothing
/// else fits. Throws `std::bad_alloc`.
[[nodiscard]] std::vector<std::string_view>
CFBundleCopyLocalizationsForPreferences(const std::vector<std::string_view> &localizations);

/// Stands in for the environment, which is otherwise read once; null ends that. Main thread.
void setLocaleEnvironmentForTesting(const LocaleEnvironment *environment) noexcept;
