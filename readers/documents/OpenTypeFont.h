#pragma once

#include "readers/documents/ProgramBytes.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace searchsystem {

/// What the tables of a TrueType or OpenType program (ISO/IEC 14496-22) say about the characters of
/// its glyphs. The bytes have to outlive it. Damaged programs say less.
class OpenTypeFont {
public:
  explicit OpenTypeFont(std::string_view program);

  /// The glyph of a code of a simple font that says nothing else (ISO 32000-2, 9.6.5.4); 0 if there
  /// is none.
  [[nodiscard]] std::uint32_t glyphOfCode(unsigned char code) const noexcept {
    return glyphOfCode_[code];
  }
  /// The character of a glyph, by the Unicode table read backwards; 0 if there is none.
  [[nodiscard]] char32_t characterOf(std::uint32_t glyph) const noexcept;
  /// The program in the Compact Font Format within this one; maybe none.
  [[nodiscard]] std::string_view compactFont() const noexcept { return compactFont_; }

private:
  struct Mapping {
    std::uint32_t code;
    std::uint32_t glyph;
  };

  void readCharacterTables(std::size_t table);
  void readCharacters(std::size_t table);
  /// Codes from `base` on, as far as they have no glyph yet.
  void addCodes(const std::vector<Mapping> &mappings, std::uint32_t base) noexcept;
  /// No program has room for more glyphs.
  [[nodiscard]] bool isFull(const std::vector<Mapping> &mappings) const noexcept {
    return mappings.size() >= program_.size();
  }
  /// All mappings of a table of formats 0, 4, 6 and 12, in the order of codes, as they stand.
  [[nodiscard]] std::vector<Mapping> readMappings(std::size_t table) const;
  [[nodiscard]] std::vector<Mapping> readSegments(std::size_t table) const;

  ProgramBytes program_;
  std::string_view compactFont_;
  std::array<std::uint32_t, 256> glyphOfCode_{};
  std::vector<char16_t> characters_;
  /// Beyond the basic plane, by glyph.
  std::vector<Mapping> otherCharacters_;
};

} // namespace searchsystem
