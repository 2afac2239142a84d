#include "platform/foundation/Localizations.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

namespace searchsystem {

namespace {

std::string variable(const char *name) {
  const char *const value = std::getenv(name);
  return value != nullptr ? value : "";
}

LocaleEnvironment &environment() {
  static auto *const read = new LocaleEnvironment{variable("LC_ALL"), variable("LC_MESSAGES"),
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
  static constexpr std::pair<std::string_view, std::string_view> names[] = {
      {"ja", "Japanese"}, {"en", "English"}, {"de", "German"}, {"fr", "French"},
      {"it", "Italian"},  {"es", "Spanish"}, {"nl", "Dutch"}};
  for (const auto &[language, name] : names)
    if (language == upTo(locale, "_.@"))
      return name;
  return std::nullopt;
}

/// The user's locales in order of preference, like gettext: LANGUAGE counts unless the locale is
/// the plain one.
std::vector<std::string_view> preferredLocales() {
  const LocaleEnvironment &e = environment();
  const std::string_view locale = !e.all.empty()        ? e.all
                                  : !e.messages.empty() ? e.messages
                                                        : e.lang;

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
    if (name && std::ranges::count(localizations, *name) > 0 &&
        std::ranges::count(ordered, *name) == 0)
      ordered.push_back(*name);
  };
  for (const std::string_view locale : preferredLocales())
    add(localizationOf(locale));
  add("English");
  if (ordered.empty() && !localizations.empty())
    ordered.push_back(localizations.front());
  return ordered;
}

void setLocaleEnvironmentForTesting(LocaleEnvironment replacement) {
  environment() = std::move(replacement);
}

} // namespace searchsystem
