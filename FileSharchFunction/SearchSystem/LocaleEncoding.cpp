#include "FileSharchFunction/SearchSystem/LocaleEncoding.h"

#include "platform/foundation/Localizations.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace searchsystem {

int GetCurrentLocaleID() noexcept {
  static constexpr std::array<std::string_view, 8> languages{
      "Japanese", "Britain", "English", "German", "French", "Italian", "Spanish", "Dutch"};
  try {
    const auto preferred =
        CFBundleCopyLocalizationsForPreferences(CFBundleCopyBundleLocalizations());
    if (preferred.empty())
      return 0;
    const auto *const found = std::find(languages.begin(), languages.end(), preferred.front());
    return found != languages.end() ? static_cast<int>(found - languages.begin()) : 0;
  } catch (...) {
    return 0;
  }
}

std::uint32_t encodingForLocale(int locale) noexcept {
  constexpr std::uint32_t macJapanese = 1, macRoman = 0, isoLatin1 = 0x0201;
  constexpr std::array encodings{macJapanese, macRoman,  macRoman,  isoLatin1,
                                 isoLatin1,   isoLatin1, isoLatin1, isoLatin1};
  const auto index = static_cast<std::size_t>(locale);
  return index < encodings.size() ? encodings[index] : macJapanese;
}

} // namespace searchsystem
