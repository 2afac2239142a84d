#include "FileSharchFunction/SearchSystem/LocaleEncoding.h"

#include "platform/foundation/Localizations.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr std::uint32_t macJapanese = 1;
constexpr std::uint32_t macRoman = 0;
constexpr std::uint32_t isoLatin1 = 0x0201;

struct Language {
  std::string_view localization;
  std::uint32_t encoding;
};

constexpr std::array<Language, 8> languages{{{"Japanese", macJapanese},
                                             {"Britain", macRoman},
                                             {"English", macRoman},
                                             {"German", isoLatin1},
                                             {"French", isoLatin1},
                                             {"Italian", isoLatin1},
                                             {"Spanish", isoLatin1},
                                             {"Dutch", isoLatin1}}};

} // namespace

int GetCurrentLocaleID() noexcept {
  try {
    const auto preferred =
        CFBundleCopyLocalizationsForPreferences(CFBundleCopyBundleLocalizations());
    if (preferred.empty())
      return 0;
    const auto *const found =
        std::find_if(languages.begin(), languages.end(), [&](const Language &language) {
          return language.localization == preferred.front();
        });
    return found != languages.end() ? static_cast<int>(found - languages.begin()) : 0;
  } catch (...) {
    return 0;
  }
}

std::uint32_t encodingForLocale(int locale) noexcept {
  const auto index = static_cast<std::size_t>(locale);
  return index < languages.size() ? languages[index].encoding : macJapanese;
}
