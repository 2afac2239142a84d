#include "platform/foundation/Localizations.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace {

const LocaleEnvironment *environmentForTesting = nullptr;

std::string variable(const char *name) {
  const char *const value = std::getenv(name);
  return value != nullptr ? value : "";
}

const LocaleEnvironment &environment() {
  if (environmentForTesting != nullptr)
    return *environmentForTesting;
  static const auto *const read = new LocaleEnvironment{variable("LC_ALL"), variable("LC_MESSAGES"),
                                                        variable("LANG"), variable("LANGUAGE")};
  return *read;
}

std::string_view upTo(std::string_view text, std::string_view ends) noexcept {
  return text.substr(0, text.find_first_of(ends));
}

bool isPlainLocale(std::string_view locale) noexcept {
  const std::string_view name = upTo(locale, ".@");
  return name.empty() || name == "C" || name == "POSIX";
}

/// The host's name for a locale such as "de_AT.UTF-8@euro".
std::optional<std::string_view> localizationOf(std::string_view locale) noexcept {
  if (isPlainLocale(locale))
    return "English";
  if (upTo(locale, ".@") == "en_GB")
    return "Britain";
  struct Name {
    std::string_view language;
    std::string_view localization;
  };
  static constexpr Name names[] = {{"ja", "Japanese"}, {"en", "English"}, {"de", "German"},
                                   {"fr", "French"},   {"it", "Italian"}, {"es", "Spanish"},
                                   {"nl", "Dutch"}};
  const std::string_view language = upTo(locale, "_.@");
  const auto *const found = std::find_if(std::begin(names), std::end(names), [&](const Name &name) {
    return name.language == language;
  });
  if (found == std::end(names))
    return std::nullopt;
  return found->localization;
}

/// The user's locales, the most wanted first, as gettext reads the environment: the list in
/// LANGUAGE counts unless the locale is the plain one.
std::vector<std::string_view> preferredLocales() {
  const LocaleEnvironment &e = environment();
  std::string_view locale = e.lang;
  if (!e.all.empty())
    locale = e.all;
  else if (!e.messages.empty())
    locale = e.messages;

  std::vector<std::string_view> locales;
  if (!isPlainLocale(locale)) {
    std::string_view list = e.language;
    while (!list.empty()) {
      const std::string_view next = upTo(list, ":");
      if (!next.empty())
        locales.push_back(next);
      list.remove_prefix(std::min(list.size(), next.size() + 1));
    }
  }
  locales.push_back(locale);
  return locales;
}

} // namespace

std::vector<std::string_view> CFBundleCopyBundleLocalizations() {
  return {"Japanese", "Britain", "English", "German", "French", "Italian", "Spanish", "Dutch"};
}

std::vector<std::string_view>
CFBundleCopyLocalizationsForPreferences(const std::vector<std::string_view> &localizations) {
  std::vector<std::string_view> ordered;
  const auto add = [&](std::optional<std::string_view> name) {
    const auto holds = [&](const std::vector<std::string_view> &names) {
      return std::find(names.begin(), names.end(), *name) != names.end();
    };
    if (name && holds(localizations) && !holds(ordered))
      ordered.push_back(*name);
  };
  for (const std::string_view locale : preferredLocales())
    add(localizationOf(locale));
  add("English");
  if (ordered.empty() && !localizations.empty())
    ordered.push_back(localizations.front());
  return ordered;
}

void setLocaleEnvironmentForTesting(const LocaleEnvironment *environment) noexcept {
  environmentForTesting = environment;
}
