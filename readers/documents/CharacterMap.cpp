#include "readers/documents/CharacterMap.h"

#include "readers/documents/Arena.h"
#include "readers/documents/GlyphNames.h"
#include "readers/documents/NamedMaps.h"
#include "readers/documents/ObjectParser.h"
#include "readers/documents/Utf8.h"

#include <algorithm>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::size_t mostCodeSpaces = 100;
constexpr std::size_t mostRanges = 300'000;
constexpr std::size_t longestText = 500;

std::uint32_t codeOf(std::string_view bytes) noexcept {
  std::uint32_t code = 0;
  for (const char c : bytes.substr(0, 4))
    code = code << 8 | static_cast<unsigned char>(c);
  return code;
}

/// Single bytes are characters, too: some writers are that short.
void appendDestination(std::string &text, std::string_view bytes) {
  if (bytes.size() == 1)
    appendUtf8(text, static_cast<unsigned char>(bytes[0]));
  else
    appendUtf16(text, bytes.substr(0, longestText));
}

} // namespace

bool CharacterMap::CodeSpace::holds(std::uint32_t code) const noexcept {
  for (std::uint32_t shift = 0; shift < length * 8; shift += 8) {
    const std::uint32_t byte = code >> shift & 0xFF;
    if (byte < (low >> shift & 0xFF) || byte > (high >> shift & 0xFF))
      return false;
  }
  return true;
}

/// Reads the operators that matter of the program that a map is; all else is passed over.
class CharacterMap::Parser {
public:
  Parser(CharacterMap &map, NamedMaps &maps) : map_(map), maps_(maps) {}

  void parse(std::string_view program) {
    parser_.reset(program);
    for (;;) {
      const Object object = parser_.next();
      if (object.kind() == Object::Kind::end || map_.identifiers_.size() > mostRanges ||
          map_.textRanges_.size() > mostRanges)
        break;
      if (object.kind() != Object::Kind::keyword) {
        // Three operands are the most that anything takes.
        if (++count_ <= 3)
          operands_[count_ - 1] = object;
        else
          operands_ = {operands_[1], operands_[2], object};
        count_ = std::min(count_, std::size_t{3});
        completeEntry();
      } else {
        perform(object.bytes());
        count_ = 0;
        arena_.clear();
      }
    }
    order(map_.identifiers_);
    order(map_.textRanges_);
  }

private:
  enum class Section { none, codeSpaces, characters, ranges, textCharacters, textRanges };

  /// In the order of codes, the later definition of two behind the earlier one.
  static void order(std::vector<Range> &ranges) {
    const auto isBefore = [](const Range &a, const Range &b) { return a.low < b.low; };
    if (!std::is_sorted(ranges.begin(), ranges.end(), isBefore))
      std::stable_sort(ranges.begin(), ranges.end(), isBefore);
  }

  void perform(std::string_view keyword) {
    if (keyword == "begincodespacerange")
      section_ = Section::codeSpaces;
    else if (keyword == "begincidchar")
      section_ = Section::characters;
    else if (keyword == "begincidrange")
      section_ = Section::ranges;
    else if (keyword == "beginbfchar")
      section_ = Section::textCharacters;
    else if (keyword == "beginbfrange")
      section_ = Section::textRanges;
    else if (keyword.starts_with("end"))
      section_ = Section::none;
    else if (keyword == "usecmap" && count_ > 0)
      useMap(operands_[count_ - 1].name());
    else if (keyword == "def" && count_ >= 2 && operands_[count_ - 2].isName("WMode"))
      map_.isVertical_ = operands_[count_ - 1].integer() == 1;
  }

  void useMap(std::string_view name) {
    if (auto base = maps_.find(name))
      map_.base_ = std::move(base);
  }

  /// Takes the operands of an entry of the open section as soon as it is whole.
  void completeEntry() {
    const std::size_t needed = section_ == Section::none                                        ? 4
                               : section_ == Section::ranges || section_ == Section::textRanges ? 3
                                                                                                : 2;
    if (count_ < needed)
      return;
    const std::string_view low = operands_[0].string();
    const Object &last = operands_[needed - 1];
    const std::uint32_t first = codeOf(low);
    switch (section_) {
    case Section::codeSpaces:
      if (!low.empty() && low.size() <= 4 && map_.codeSpaces_.size() < mostCodeSpaces)
        map_.codeSpaces_.push_back({first, codeOf(last.string()), low.size()});
      break;
    case Section::characters:
      map_.identifiers_.push_back({first, first, static_cast<std::uint32_t>(last.integer()), 0});
      break;
    case Section::ranges:
      map_.identifiers_.push_back(
          {first, codeOf(operands_[1].string()), static_cast<std::uint32_t>(last.integer()), 0});
      break;
    case Section::textCharacters:
      addText(first, first, last);
      break;
    case Section::textRanges:
      addTexts(first, codeOf(operands_[1].string()), last);
      break;
    case Section::none:
      break;
    }
    count_ = 0;
    // A map has thousands of entries to a section at most; their strings are small.
    if (++entries_ % 256 == 0)
      arena_.clear();
  }

  void addTexts(std::uint32_t first, std::uint32_t last, const Object &destination) {
    if (!destination.isArray())
      return addText(first, last, destination);
    for (const Object &item : destination.array()) {
      addText(first, first, item);
      if (first++ >= last || map_.textRanges_.size() > mostRanges)
        break;
    }
  }

  void addText(std::uint32_t first, std::uint32_t last, const Object &destination) {
    const std::size_t place = map_.texts_.size();
    if (destination.isName())
      appendGlyphName(map_.texts_, destination.name());
    else
      appendDestination(map_.texts_, destination.string());
    const std::size_t length = map_.texts_.size() - place;
    map_.textRanges_.push_back(
        {first, last, static_cast<std::uint32_t>(place), static_cast<std::uint32_t>(length)});
  }

  CharacterMap &map_;
  NamedMaps &maps_;
  Arena arena_;
  ObjectParser parser_{arena_, ObjectParser::Syntax::content};
  Section section_ = Section::none;
  std::array<Object, 3> operands_;
  std::size_t count_ = 0;
  std::size_t entries_ = 0;
};

std::shared_ptr<const CharacterMap> CharacterMap::parse(std::string_view program, NamedMaps &maps,
                                                        std::shared_ptr<const CharacterMap> base) {
  auto map = std::make_shared<CharacterMap>();
  map->base_ = std::move(base);
  Parser(*map, maps).parse(program);
  if (map->codeSpaces_.empty() && map->base_ != nullptr) {
    map->codeSpaces_ = map->base_->codeSpaces_;
    map->isVertical_ = map->isVertical_ || map->base_->isVertical_;
  }
  map->isTwoByte_ = std::all_of(map->codeSpaces_.begin(), map->codeSpaces_.end(),
                                [](const CodeSpace &space) { return space.length == 2; });
  return map;
}

std::shared_ptr<const CharacterMap> CharacterMap::identity(bool isVertical) {
  auto map = std::make_shared<CharacterMap>();
  map->codeSpaces_.push_back({0, 0xFFFF, 2});
  map->isIdentity_ = map->isTwoByte_ = true;
  map->isVertical_ = isVertical;
  return map;
}

CharacterMap::Code CharacterMap::firstCode(std::string_view bytes) const noexcept {
  std::uint32_t code = 0;
  for (std::size_t length = 1; length <= std::min<std::size_t>(bytes.size(), 4); ++length) {
    code = code << 8 | static_cast<unsigned char>(bytes[length - 1]);
    for (const CodeSpace &space : codeSpaces_)
      if (space.length == length && space.holds(code))
        return {code, length};
  }
  return {static_cast<unsigned char>(bytes[0]), 1};
}

const CharacterMap::Range *CharacterMap::find(const std::vector<Range> &ranges,
                                              std::uint32_t code) noexcept {
  const auto behind =
      std::upper_bound(ranges.begin(), ranges.end(), code,
                       [](std::uint32_t value, const Range &range) { return value < range.low; });
  // Ranges may overlap: a few before this one are worth a look.
  std::ptrdiff_t tries = std::min<std::ptrdiff_t>(behind - ranges.begin(), 4);
  for (auto range = behind; tries > 0; --tries)
    if ((--range)->high >= code)
      return &*range;
  return nullptr;
}

std::optional<std::uint32_t> CharacterMap::identifier(std::uint32_t code) const noexcept {
  for (const CharacterMap *map = this; map != nullptr; map = map->base_.get()) {
    if (map->isIdentity_)
      return code;
    if (const Range *const range = find(map->identifiers_, code))
      return range->value + (code - range->low);
  }
  return std::nullopt;
}

bool CharacterMap::appendText(std::string &text, std::uint32_t code) const {
  for (const CharacterMap *map = this; map != nullptr; map = map->base_.get()) {
    if (map->isIdentity_) {
      appendUtf8(text, code);
      return true;
    }
    const Range *const range = find(map->textRanges_, code);
    if (range == nullptr)
      continue;
    const std::string_view first =
        std::string_view(map->texts_).substr(range->value, range->length);
    std::size_t last = 0, next = 0;
    while (next < first.size()) {
      last = next;
      takeUtf8(first, next);
    }
    text += first.substr(0, last);
    if (last < first.size())
      appendUtf8(text, takeUtf8(first, last) + (code - range->low));
    return !first.empty();
  }
  return false;
}

} // namespace searchsystem
