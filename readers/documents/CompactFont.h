#pragma once

#include "readers/documents/ProgramBytes.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// What a font program in the Compact Font Format (Adobe Technical Note 5176) says about the
/// characters of its glyphs. The bytes have to outlive it. Damaged programs say less.
class CompactFont {
public:
  explicit CompactFont(std::string_view program);

  /// Its glyphs have character identifiers in place of names.
  [[nodiscard]] bool isCharacterKeyed() const noexcept { return isCharacterKeyed_; }
  /// The name of a glyph; none if it has no name.
  [[nodiscard]] std::string_view glyphName(std::uint32_t glyph) const noexcept;
  /// The name of the glyph that the font's own encoding gives a code.
  [[nodiscard]] std::string_view nameOfCode(unsigned char code) const noexcept;
  /// The standard encoding is the font's own.
  [[nodiscard]] bool hasStandardEncoding() const noexcept { return encoding_ == 0; }

private:
  /// An array of objects of different sizes.
  struct Index {
    std::uint32_t count = 0;
    std::size_t offsetSize = 1;
    std::size_t offsets = 0;
    std::size_t data = 0;
    std::size_t end = 0;
  };

  [[nodiscard]] Index indexAt(std::size_t at) const noexcept;
  [[nodiscard]] std::string_view item(const Index &index, std::uint32_t number) const noexcept;
  void readTopDictionary(std::string_view dictionary);
  void readCharset(std::uint32_t glyphCount);
  void readEncoding();
  [[nodiscard]] std::string_view string(std::uint32_t identifier) const noexcept;

  ProgramBytes program_;
  Index strings_;
  std::uint32_t charset_ = 0;
  std::uint32_t encoding_ = 0;
  std::uint32_t charStrings_ = 0;
  bool isCharacterKeyed_ = false;
  /// String identifiers of the glyphs.
  std::vector<std::uint16_t> names_;
  std::array<std::uint16_t, 256> glyphOfCode_{};
};

/// The strings that every program has (annex A).
extern const std::array<std::string_view, 391> compactFontStrings;

} // namespace searchsystem
