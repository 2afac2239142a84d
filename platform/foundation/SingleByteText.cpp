#include "platform/foundation/SingleByteText.h"

#include <algorithm>
#include <cstddef>

namespace searchsystem {

namespace {

using Characters = std::array<char16_t, 256>;

/// Each byte as the code point of its value, up to `last`.
constexpr Characters identityUpTo(std::size_t last) noexcept {
  Characters characters{};
  for (std::size_t i = 0; i < characters.size(); ++i)
    characters[i] = i <= last ? static_cast<char16_t>(i) : SingleByteTable::notAlone;
  return characters;
}

constexpr std::array<char16_t, 128> macRomanFrom0x80{
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3,
    0x00E5, 0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3,
    0x00A7, 0x2022, 0x00B6, 0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA,
    0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D,
    0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, 0x00CB, 0x00C8, 0x00CD, 0x00CE,
    0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};

constexpr Characters macRoman() noexcept {
  Characters characters = identityUpTo(0x7F);
  std::copy(macRomanFrom0x80.begin(), macRomanFrom0x80.end(), characters.begin() + 0x80);
  return characters;
}

/// JIS X 0201, but with the tilde of ASCII, which is what text in these encodings means by it.
constexpr Characters shiftJIS() noexcept {
  Characters characters = identityUpTo(0x7F);
  characters[0x5C] = 0x00A5;
  for (std::size_t i = 0xA1; i <= 0xDF; ++i)
    characters[i] = static_cast<char16_t>(0xFF61 + (i - 0xA1));
  return characters;
}

constexpr Characters macJapanese() noexcept {
  Characters characters = shiftJIS();
  characters[0x80] = 0x005C;
  characters[0xA0] = 0x00A0;
  characters[0xFD] = 0x00A9;
  characters[0xFE] = 0x2122;
  characters[0xFF] = 0x2026;
  return characters;
}

} // namespace

constexpr SingleByteTable macRomanTable(macRoman());
constexpr SingleByteTable isoLatin1Table(identityUpTo(0xFF));
constexpr SingleByteTable shiftJISSingleBytes(shiftJIS());
constexpr SingleByteTable macJapaneseSingleBytes(macJapanese());

int SingleByteTable::byteOf(std::int32_t character) const noexcept {
  if (character >= 0 && character < 0x80 &&
      characters_[static_cast<std::size_t>(character)] == character)
    return character;
  const auto *const found = std::find_if(characters_.begin(), characters_.end(), [&](char16_t c) {
    return c == character && c != notAlone;
  });
  return found != characters_.end() ? static_cast<int>(found - characters_.begin()) : -1;
}

} // namespace searchsystem
