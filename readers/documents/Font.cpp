#include "readers/documents/Font.h"

#include "readers/documents/CharacterClass.h"
#include "readers/documents/CompactFont.h"
#include "readers/documents/Encodings.h"
#include "readers/documents/GlyphNames.h"
#include "readers/documents/NormalisedText.h"
#include "readers/documents/OpenTypeFont.h"
#include "readers/documents/StandardWidths.h"
#include "readers/documents/TypeOneFont.h"
#include "readers/documents/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::size_t mostMapBytes = std::size_t{4} << 20;
constexpr std::size_t mostProgramBytes = std::size_t{32} << 20;
/// What stands before the encrypted part of a Type 1 program.
constexpr std::size_t mostClearBytes = std::size_t{64} << 10;
constexpr std::size_t mostWidthRanges = 100'000;
constexpr int deepestMap = 5;

float finite(double value) noexcept {
  return std::isfinite(value) ? static_cast<float>(std::clamp(value, -1e4, 1e4)) : 0.0F;
}

bool holds(std::string_view name, std::string_view word) noexcept {
  return name.find(word) != std::string_view::npos;
}

/// Whether a name may be one that a program made up for a code: it has no number, or that of the
/// code (a65, or x41 in two hexadecimal digits).
bool isMadeOf(std::string_view name, std::size_t code) noexcept {
  constexpr std::string_view hexadecimal = "0123456789ABCDEF";
  if (name.size() > 2 && name[name.size() - 2] == hexadecimal[code / 16 % 16] &&
      name.back() == hexadecimal[code % 16])
    return true;
  const std::size_t digits = std::min(name.find_first_of("0123456789"), name.size());
  std::size_t number = 0;
  const auto [end, error] =
      std::from_chars(name.data() + digits, name.data() + name.size(), number);
  return digits == name.size() ||
         (error == std::errc() && end == name.data() + name.size() && number == code);
}

/// The ligatures of bitmap fonts, as TeX has them, in the place that they have in its fonts of 128
/// characters or in those of 256.
std::string_view ligatureOfBitmapFont(unsigned char code, bool isLarge) noexcept {
  constexpr std::string_view ligatures[] = {"ff", "fi", "fl", "ffi", "ffl"};
  const unsigned first = isLarge ? 27 : 11;
  return code >= first && code < first + 5 ? ligatures[code - first] : std::string_view();
}

/// The upper half of TeX's fonts of 256 characters.
constexpr char16_t upperHalfOfBitmapFont[] =
    u"ĂĄĆČĎĚĘĞĹĽŁŃŇŊŐŔŘŚŠŞŤŢŰŮŸŹŽŻĲİđ§ăąćčďěęğĺľłńňŋőŕřśšşťţűůÿźžżĳ¡¿£"
    u"ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖŒØÙÚÛÜÝÞẞàáâãäåæçèéêëìíîïðñòóôõöœøùúûüýþß";
static_assert(std::size(upperHalfOfBitmapFont) == 129);

} // namespace

/// The font program within the document, as far as it says which characters glyphs are.
class Font::Program {
public:
  explicit Program(Font &font) {
    Document &document = font.document_;
    const Dictionary &descriptor = font.descriptor_;
    if (const Object file = document.get(descriptor, "FontFile"); file.isStream()) {
      bytes_ = font.read(*file.stream(), mostClearBytes);
      names_ = typeOneEncoding(bytes_);
      return;
    }
    Object file = document.get(descriptor, "FontFile2");
    if (!file.isStream())
      file = document.get(descriptor, "FontFile3");
    if (!file.isStream())
      return;
    bytes_ = font.read(*file.stream(), mostProgramBytes);
    if (bytes_.starts_with('\1')) {
      compact_.emplace(bytes_);
      return;
    }
    openType_.emplace(bytes_);
    if (!openType_->compactFont().empty())
      compact_.emplace(openType_->compactFont());
  }

  void appendTextOfCode(std::string &text, unsigned char code) const {
    if (const auto name = names_.find(code); name != names_.end())
      appendGlyphName(text, name->second);
    else if (compact_ && compact_->hasStandardEncoding() && !openType_)
      appendUtf8(text, standardEncoding[code]);
    else if (compact_ && !openType_)
      appendGlyphName(text, compact_->nameOfCode(code));
    else if (openType_)
      appendTextOfGlyph(text, openType_->glyphOfCode(code));
  }

  void appendTextOfGlyph(std::string &text, std::uint32_t glyph) const {
    if (const char32_t character = openType_ ? openType_->characterOf(glyph) : 0)
      appendUtf8(text, character);
    else if (compact_)
      appendGlyphName(text, compact_->glyphName(glyph));
  }

  [[nodiscard]] bool hasOwnCodes() const noexcept { return !names_.empty() || compact_; }

private:
  std::string bytes_;
  std::map<unsigned char, std::string_view> names_;
  std::optional<CompactFont> compact_;
  std::optional<OpenTypeFont> openType_;
};

Font::Font(Document &document, NamedMaps &maps, const Dictionary &dictionary, std::size_t &budget)
    : document_(document), maps_(maps), budget_(budget) {
  const std::string_view kind = document_.get(dictionary, "Subtype").name();
  const Object name = document_.get(dictionary, "BaseFont");
  name_ = name.name();
  descriptor_ = document_.get(dictionary, "FontDescriptor").dictionary();
  readToUnicode(document_.get(dictionary, "ToUnicode"));
  isTrueType_ = kind == "TrueType";
  isTypeThree_ = kind == "Type3";
  if (kind == "Type0") {
    readComposite(dictionary);
  } else {
    readSimple(dictionary);
    if (isTypeThree_)
      readTypeThree(dictionary);
  }
}

Font::~Font() = default;

Font::Program &Font::program() {
  if (program_ == nullptr)
    program_ = std::make_unique<Program>(*this);
  return *program_;
}

std::string Font::read(const Stream &stream, std::size_t most) {
  std::string bytes = document_.decoded(stream, std::min(most, budget_));
  budget_ -= std::min(budget_, bytes.size());
  return bytes;
}

std::shared_ptr<const CharacterMap> Font::readMap(const Object &map, int depth) {
  if (map.isName())
    return maps_.find(map.name());
  if (!map.isStream() || depth > deepestMap)
    return nullptr;
  auto base = readMap(document_.get(map.dictionary(), "UseCMap"), depth + 1);
  return CharacterMap::parse(read(*map.stream(), mostMapBytes), maps_, std::move(base));
}

void Font::readToUnicode(const Object &map) { toUnicode_ = readMap(map); }

void Font::readSimple(const Dictionary &dictionary) {
  firstCode_ = static_cast<std::uint32_t>(
      std::clamp<std::int64_t>(document_.get(dictionary, "FirstChar").integer(), 0, 255));
  const Object widths = document_.get(dictionary, "Widths");
  for (const Object &width :
       widths.array().first(std::min<std::size_t>(widths.array().size(), 256)))
    widths_.push_back(finite(document_.resolve(width).number() / 1000));
  otherWidth_ = finite(document_.get(descriptor_, "MissingWidth").number() / 1000);
  readEncoding(document_.get(dictionary, "Encoding"));
}

void Font::readEncoding(const Object &encoding) {
  if (encoding.isName()) {
    encoding_ = encodingNamed(encoding.name());
    return;
  }
  encoding_ = encodingNamed(document_.get(encoding.dictionary(), "BaseEncoding").name());
  const Object differences = document_.get(encoding.dictionary(), "Differences");
  std::size_t code = 0;
  std::size_t named = 0, madeOfCodes = 0;
  bool hasSmallLigatures = false, hasLargeLigatures = false;
  for (const Object &item : differences.array()) {
    const Object entry = document_.resolve(item);
    if (entry.isNumber()) {
      code = static_cast<std::size_t>(std::clamp<std::int64_t>(entry.integer(), 0, 256));
    } else if (code < 256) {
      differences_.resize(256);
      differences_[code] = entry.name();
      ++named;
      hasSmallLigatures |= !ligatureOfBitmapFont(static_cast<unsigned char>(code), false).empty();
      hasLargeLigatures |= !ligatureOfBitmapFont(static_cast<unsigned char>(code), true).empty();
      isLargeBitmapFont_ |= code >= 0x80;
      if (isTypeThree_ && isMadeOf(entry.name(), code)) {
        std::string text;
        appendGlyphName(text, entry.name());
        madeOfCodes += text.empty() ? 1 : 0;
      }
      ++code;
    }
  }
  // A few names that mean nothing may be those of characters by chance.
  hasCodesAsNames_ = madeOfCodes > named / 2;
  isLargeBitmapFont_ |= hasLargeLigatures && !hasSmallLigatures;
}

void Font::readTypeThree(const Dictionary &dictionary) {
  const Object matrix = document_.get(dictionary, "FontMatrix");
  const auto item = [&](const Object &array, std::size_t i) {
    return i < array.array().size() ? document_.resolve(array.array()[i]).number() : 0;
  };
  const double scale =
      matrix.array().size() == 6 ? std::hypot(item(matrix, 0), item(matrix, 1)) : 0.001;
  for (float &width : widths_)
    width = finite(width * scale * 1000);
  const Object box = document_.get(dictionary, "FontBBox");
  const double height =
      std::abs(item(box, 3) - item(box, 1)) * std::hypot(item(matrix, 2), item(matrix, 3));
  const float widest = widths_.empty() ? 0 : *std::max_element(widths_.begin(), widths_.end());
  // A box may be left empty, or be that of a page.
  emSize_ = height > 0.01 && height < 4 * std::max<double>(widest, 0.05) ? height
            : widest > 0                                                 ? widest
                                                                         : 1;
}

void Font::readComposite(const Dictionary &dictionary) {
  const Object encoding = document_.get(dictionary, "Encoding");
  codes_ = readMap(encoding);
  if (codes_ == nullptr)
    codes_ = CharacterMap::identity(encoding.name().ends_with("-V"));
  const std::string_view codes = encoding.name();
  codeForm_ = holds(codes, "-UTF16-") || holds(codes, "-UCS2-") ? CodeForm::utf16
              : holds(codes, "-UTF8-")                          ? CodeForm::utf8
              : holds(codes, "-UTF32-")                         ? CodeForm::utf32
                                                                : CodeForm::other;
  const Object fonts = document_.get(dictionary, "DescendantFonts");
  const Dictionary font =
      (fonts.array().empty() ? fonts : document_.resolve(fonts.array()[0])).dictionary();
  descriptor_ = document_.get(font, "FontDescriptor").dictionary();
  const Dictionary system = document_.get(font, "CIDSystemInfo").dictionary();
  const std::string collection = std::string(document_.get(system, "Registry").string()) + "-" +
                                 std::string(document_.get(system, "Ordering").string());
  if (collection.starts_with("Adobe-") && collection != "Adobe-Identity" &&
      codeForm_ == CodeForm::other && collection.size() < 40)
    collection_ = maps_.find(collection + "-UCS2");
  if (const Object numbers = document_.get(font, "CIDToGIDMap"); numbers.isStream()) {
    hasGlyphNumbers_ = true;
    glyphNumbers_ = read(*numbers.stream(), 0x20000);
  }
  if (isVertical()) {
    const Object vertical = document_.get(font, "DW2");
    otherWidth_ = vertical.array().size() == 2
                      ? finite(-document_.resolve(vertical.array()[1]).number() / 1000)
                      : 1;
    return;
  }
  otherWidth_ = finite(document_.get(font, "DW").number(1000) / 1000);
  readCompositeWidths(document_.get(font, "W"));
}

void Font::readCompositeWidths(const Object &widths) {
  const std::span<const Object> items = widths.array();
  for (std::size_t i = 0; i + 1 < items.size() && widthRanges_.size() < mostWidthRanges;) {
    const auto first = static_cast<std::uint32_t>(document_.resolve(items[i]).integer());
    const Object second = document_.resolve(items[i + 1]);
    if (second.isArray()) {
      std::uint32_t code = first;
      for (const Object &width : second.array()) {
        widthRanges_.push_back({code, code, finite(document_.resolve(width).number() / 1000)});
        if (++code > 0xFFFFFF || widthRanges_.size() >= mostWidthRanges)
          break;
      }
      i += 2;
    } else {
      if (i + 2 < items.size())
        widthRanges_.push_back({first, static_cast<std::uint32_t>(second.integer()),
                                finite(document_.resolve(items[i + 2]).number() / 1000)});
      i += 3;
    }
  }
  std::stable_sort(widthRanges_.begin(), widthRanges_.end(),
                   [](const WidthRange &a, const WidthRange &b) { return a.first < b.first; });
}

const Glyph &Font::takeGlyph(std::string_view &bytes, CharacterMap::Code &code) {
  if (isSimple()) {
    code = {static_cast<unsigned char>(bytes[0]), 1};
  } else if (codes_->isTwoByte() && bytes.size() >= 2) {
    code = {static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[0])) << 8 |
                static_cast<unsigned char>(bytes[1]),
            2};
  } else {
    code = codes_->firstCode(bytes);
  }
  bytes.remove_prefix(code.length);
  if (isSimple())
    return simpleGlyph(static_cast<unsigned char>(code.value));
  Glyph *glyph = &passing_;
  if (code.value < pageSize * pages_.size()) {
    std::unique_ptr<GlyphPage> &page = pages_[code.value / pageSize];
    if (page == nullptr)
      page = std::make_unique<GlyphPage>();
    glyph = &(*page)[code.value % pageSize];
    if ((glyph->flags & Glyph::unknown) == 0)
      return *glyph;
  }
  complete(*glyph, code.value);
  return *glyph;
}

void Font::complete(Glyph &glyph, std::uint32_t code) {
  const std::string raw = rawText(code);
  TextTraits traits;
  const std::string text = normalised(raw, traits);
  glyph.flags = static_cast<std::uint8_t>((traits.mayCompose ? Glyph::mayCompose : 0) |
                                          (traits.isRightToLeft ? Glyph::isRightToLeft : 0) |
                                          (traits.hasSoftHyphen ? Glyph::hasSoftHyphen : 0));
  glyph.advance = advanceOf(code, raw);
  glyph.length = 0;
  std::size_t end = 0;
  const char32_t mark = raw.empty() ? 0 : combiningMarkOf(takeUtf8(raw, end));
  if (mark != 0 && end == raw.size()) {
    glyph.flags |= Glyph::isAccent;
    glyph.more = static_cast<std::uint16_t>(mark);
  }
  if (text.size() <= Glyph::room) {
    std::copy(text.begin(), text.end(), glyph.text.begin());
    glyph.length = static_cast<std::uint8_t>(text.size());
  } else if (longTexts_.size() < mostLongTexts) {
    glyph.flags |= Glyph::isLong;
    glyph.more = static_cast<std::uint16_t>(longTexts_.size());
    longTexts_.push_back(text);
  }
}

std::string Font::rawText(std::uint32_t code) {
  std::string text;
  if (toUnicode_ != nullptr && toUnicode_->appendText(text, code) && text != "\uFFFD" &&
      text != std::string_view("\0", 1))
    return text;
  text.clear();
  if (isSimple())
    appendSimpleText(text, static_cast<unsigned char>(code));
  else
    appendCompositeText(text, code);
  return text;
}

void Font::appendSimpleText(std::string &text, unsigned char code) {
  if (!differences_.empty() && !differences_[code].empty()) {
    const std::string_view name = differences_[code];
    // Their names may also be the codes themselves, as bytes.
    const bool isCode = isTypeThree_ && name.size() == 1 && name[0] == static_cast<char>(code);
    if (!hasCodesAsNames_ && !isCode)
      return appendGlyphName(text, name);
    // A name without a number is that of a drawing.
    const bool hasNumber = name.find_first_of("0123456789") != std::string_view::npos;
    if (hasNumber || isCode)
      text += ligatureOfBitmapFont(code, isLargeBitmapFont_);
    if (hasNumber && code >= 0x80)
      return appendUtf8(text, upperHalfOfBitmapFont[code - 0x80]);
    return appendUtf8(text, code < 0x7F ? standardEncoding[code] : 0);
  }
  if (encoding_ != nullptr)
    return appendUtf8(text, (*encoding_)[code]);
  if (holds(name_, "Dingbats"))
    return appendUtf8(text, dingbatsEncoding[code]);
  program().appendTextOfCode(text, code);
  if (!text.empty() || program().hasOwnCodes())
    return;
  if (holds(name_, "Symbol"))
    appendUtf8(text, symbolEncoding[code]);
  else if (!holds(name_, "dings"))
    appendUtf8(text, isTrueType_ ? windowsEncoding[code] : standardEncoding[code]);
}

void Font::appendCompositeText(std::string &text, std::uint32_t code) {
  std::string bytes;
  switch (codeForm_) {
  case CodeForm::utf16:
    for (int shift = code > 0xFFFF ? 24 : 8; shift >= 0; shift -= 8)
      bytes += static_cast<char>(code >> shift & 0xFF);
    return appendUtf16(text, bytes);
  case CodeForm::utf8:
    for (int shift = 24; shift >= 0; shift -= 8)
      if (const auto byte = static_cast<char>(code >> shift & 0xFF); byte != 0)
        text += byte;
    return;
  case CodeForm::utf32:
    return appendUtf8(text, code);
  case CodeForm::other:
    break;
  }
  const std::optional<std::uint32_t> identifier = codes_->identifier(code);
  if (!identifier || (collection_ != nullptr && collection_->appendText(text, *identifier)))
    return;
  std::uint32_t glyph = *identifier;
  if (hasGlyphNumbers_)
    glyph = ProgramBytes(glyphNumbers_).word(std::size_t{glyph} * 2);
  program().appendTextOfGlyph(text, glyph);
}

float Font::advanceOf(std::uint32_t code, const std::string &text) const {
  if (isSimple()) {
    if (code >= firstCode_ && code - firstCode_ < widths_.size())
      return widths_[code - firstCode_];
    std::size_t end = 0;
    if (widths_.empty() && otherWidth_ == 0)
      return finite(standardWidth(name_, text.empty() ? 0 : takeUtf8(text, end)));
    return otherWidth_;
  }
  const std::uint32_t identifier = codes_->identifier(code).value_or(0);
  const auto behind = std::upper_bound(
      widthRanges_.begin(), widthRanges_.end(), identifier,
      [](std::uint32_t value, const WidthRange &range) { return value < range.first; });
  return behind != widthRanges_.begin() && std::prev(behind)->last >= identifier
             ? std::prev(behind)->width
             : otherWidth_;
}

} // namespace searchsystem
