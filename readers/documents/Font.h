#pragma once

#include "readers/documents/CharacterMap.h"
#include "readers/documents/Document.h"
#include "readers/documents/NamedMaps.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// What one code of a font shows: its text in the normalised form, and how far it moves the pen.
struct Glyph {
  static constexpr std::uint8_t unknown = 1;
  /// The text is `Font::longText`.
  static constexpr std::uint8_t isLong = 2;
  static constexpr std::uint8_t mayCompose = 4;
  static constexpr std::uint8_t isRightToLeft = 8;
  static constexpr std::uint8_t hasSoftHyphen = 16;
  /// An accent of its own (´), which may be meant for a letter.
  static constexpr std::uint8_t isAccent = 32;
  /// What a line has to know of its glyphs.
  static constexpr std::uint8_t lineTraits = mayCompose | isRightToLeft | hasSoftHyphen;
  static constexpr std::size_t room = 8;

  std::array<char, room> text{};
  /// In units of the font's size.
  float advance = 0;
  std::uint8_t length = 0;
  std::uint8_t flags = unknown;
  /// Which long text, or the combining mark of an accent.
  std::uint16_t more = 0;
};

/// A font of a document (ISO 32000-2, 9.5 to 9.10): from codes to text and widths. What a code
/// shows is found out when it is first asked for, programs are read when nothing else helps. The
/// document and the maps have to outlive it. Not thread-safe.
class Font {
public:
  /// How many fonts' tables a long document can fill is the business of the cache that holds them.
  static constexpr std::size_t mostLongTexts = 10'000;

  /// `budget` is how many bytes of programs and maps all fonts of the document may read yet.
  Font(Document &document, NamedMaps &maps, const Dictionary &dictionary, std::size_t &budget);
  Font(const Font &) = delete;
  Font &operator=(const Font &) = delete;
  ~Font();

  /// Codes have one byte.
  [[nodiscard]] bool isSimple() const noexcept { return codes_ == nullptr; }
  [[nodiscard]] bool isVertical() const noexcept {
    return codes_ != nullptr && codes_->isVertical();
  }
  /// How large the letters are, in units of the font's size: 1 but for fonts of Type 3.
  [[nodiscard]] double emSize() const noexcept { return emSize_; }

  /// The glyph of a code of one byte.
  [[nodiscard]] const Glyph &simpleGlyph(unsigned char code) {
    Glyph &glyph = simpleGlyphs_[code];
    if ((glyph.flags & Glyph::unknown) != 0)
      complete(glyph, code);
    return glyph;
  }
  /// Takes the first code off `bytes`, which are not empty. The glyph is valid until the next call.
  [[nodiscard]] const Glyph &takeGlyph(std::string_view &bytes, CharacterMap::Code &code);
  [[nodiscard]] std::string_view longText(const Glyph &glyph) const noexcept {
    return longTexts_[glyph.more];
  }
  [[nodiscard]] std::string_view textOf(const Glyph &glyph) const noexcept {
    return (glyph.flags & Glyph::isLong) != 0 ? longText(glyph)
                                              : std::string_view(glyph.text.data(), glyph.length);
  }

private:
  static constexpr std::size_t pageSize = 256;
  using GlyphPage = std::array<Glyph, pageSize>;
  class Program;
  struct WidthRange {
    std::uint32_t first, last;
    float width;
  };

  void readSimple(const Dictionary &dictionary);
  void readTypeThree(const Dictionary &dictionary);
  void readEncoding(const Object &encoding);
  void readComposite(const Dictionary &dictionary);
  void readCompositeWidths(const Object &widths);
  void readToUnicode(const Object &map);
  [[nodiscard]] std::shared_ptr<const CharacterMap> readMap(const Object &map, int depth = 0);

  /// The most bytes of a stream; the budget may allow fewer.
  [[nodiscard]] std::string read(const Stream &stream, std::size_t most);
  void complete(Glyph &glyph, std::uint32_t code);
  [[nodiscard]] std::string rawText(std::uint32_t code);
  void appendSimpleText(std::string &text, unsigned char code);
  void appendCompositeText(std::string &text, std::uint32_t code);
  [[nodiscard]] float advanceOf(std::uint32_t code, const std::string &text) const;
  [[nodiscard]] Program &program();

  Document &document_;
  NamedMaps &maps_;
  std::size_t &budget_;
  Dictionary descriptor_;
  std::string name_;
  double emSize_ = 1;
  bool isTrueType_ = false;
  bool isTypeThree_ = false;

  std::shared_ptr<const CharacterMap> toUnicode_;
  std::unique_ptr<Program> program_;

  // Simple fonts.
  std::array<Glyph, pageSize> simpleGlyphs_;
  const std::array<char16_t, 256> *encoding_ = nullptr;
  std::vector<std::string_view> differences_;
  /// The names of a font of Type 3 say nothing, and the codes are characters.
  bool hasCodesAsNames_ = false;
  /// Such a font has 256 characters, not 128.
  bool isLargeBitmapFont_ = false;
  std::uint32_t firstCode_ = 0;
  std::vector<float> widths_;
  float otherWidth_ = 0;

  // Composite fonts.
  std::shared_ptr<const CharacterMap> codes_;
  /// From identifiers to text.
  std::shared_ptr<const CharacterMap> collection_;
  enum class CodeForm : std::uint8_t { other, utf8, utf16, utf32 } codeForm_ = CodeForm::other;
  std::vector<WidthRange> widthRanges_;
  bool hasGlyphNumbers_ = false;
  std::string glyphNumbers_;
  std::array<std::unique_ptr<GlyphPage>, 256> pages_;
  Glyph passing_;

  std::vector<std::string> longTexts_;
};

} // namespace searchsystem
