#include "readers/documents/TextLayout.h"

#include "readers/documents/BidirectionalOrder.h"
#include "readers/documents/NormalisedText.h"
#include "readers/documents/Utf8.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace searchsystem {

namespace {

/// How far up or down, in heights of the letters, text still belongs to the line.
constexpr double highestShift = 0.45;
/// Two directions are the same if their cosine is more.
constexpr double sameDirection = 0.98;
/// In ems: an accent and its letter; what was shown twice; further back something else begins.
constexpr double widestAccent = 1.2;
constexpr double repeatedShift = 0.15;
constexpr double furthestBack = 1;
/// Letters that stand this far apart, in ems, and the part of it that is taken back behind them, if
/// the space between them stands for a blank.
constexpr double leastBlank = 0.15;
constexpr double leastTakenBack = 0.8;
/// From here on a note in the margin may begin.
constexpr double leastMargin = 0.8;

/// A letter without its dot gets it back with another accent's place.
char32_t dotted(char32_t letter) noexcept {
  return letter == 0x131 ? U'i' : letter == 0x237 ? U'j' : letter;
}

} // namespace

void TextLayout::makeRoom(std::size_t more) {
  if (line_.size() - size_ < more)
    line_.resize(std::max(size_ + more, line_.size() * 2));
}

void TextLayout::appendBytes(std::string_view bytes) {
  makeRoom(bytes.size());
  bytes.copy(line_.data() + size_, bytes.size());
  size_ += bytes.size();
}

void TextLayout::beginLine(const PenPlace &place) {
  isLineOpen_ = true;
  origin_ = place;
  left_ = right_ = 0;
  isInMargin_ = flow_.isInMargin(linePlace(place, 0, 0));
  beginSegment(place, false);
}

void TextLayout::endWord(const PenPlace &place) {
  const bool isOpen = size_ > 0 && line().back() != ' ';
  if (isOpen)
    appendBytes(" ");
  beginSegment(place, isOpen);
}

void TextLayout::beginSegment(const PenPlace &place, bool hasBlankBefore) {
  const double from = along(place.x, place.y);
  left_ = std::min(left_, from);
  if (!segments_.empty() && segments_.back().begin == size_)
    segments_.back().from = segments_.back().to = from;
  else
    segments_.push_back({size_, from, from, hasBlankBefore});
}

void TextLayout::beginShowing(const PenPlace &place) {
  present_ = {place, size_, 0, segments_.size()};
  beginString(place);
}

void TextLayout::beginString(const PenPlace &place) {
  if (size_ > longestLine) {
    endLine();
    present_.begin = present_.segments = 0;
  }
  if (!isLineOpen_) {
    beginLine(place);
    pen_ = place;
    return;
  }
  const double dx = place.x - pen_.x;
  const double dy = place.y - pen_.y;
  double way = dx * pen_.directionX + dy * pen_.directionY;
  const double shift = std::abs(dy * pen_.directionX - dx * pen_.directionY);
  const double em = std::max(place.em, pen_.em);
  const double height = std::max(place.height, pen_.height);
  const bool isSameDirection =
      pen_.directionX * place.directionX + pen_.directionY * place.directionY > sameDirection;
  pen_ = place;
  const bool isApart = way > leastMargin * em || way < -furthestBack * em;
  // Numbers that are none compare as false.
  if (!isSameDirection || !(shift <= highestShift * height) ||
      (isApart && flow_.isInMargin(linePlace(place, 0, 0)) != isInMargin_)) {
    endLine();
    present_.begin = present_.segments = 0;
    beginLine(place);
    return;
  }
  if (secondGlyph_ > 0 && spacing_ > leastBlank * em && way < -leastTakenBack * spacing_)
    dividePair();
  way = way > 0 ? std::max(0.0, way + std::min(spacing_, 0.0))
                : std::min(0.0, way + std::max(spacing_, 0.0));
  if (way > widestGap * em) {
    endWord(place);
  } else if (way < -widestOverlap * em) {
    moveBack(place, way / em);
  }
}

/// Some writers show the end of a word and the beginning of the next one as two letters set apart.
void TextLayout::dividePair() {
  const std::string second(line().substr(secondGlyph_));
  size_ = secondGlyph_;
  appendBytes(" ");
  appendBytes(second);
  for (std::size_t *const place : {&present_.begin, &last_.end})
    *place += *place > secondGlyph_ ? 1 : 0;
  secondGlyph_ = 0;
}

void TextLayout::moveBack(const PenPlace &place, double ems) {
  if (accent_.mark != 0 && accent_.end == size_ && ems >= -widestAccent) {
    pendingMark_ = accent_.mark;
    size_ = accent_.begin;
    accent_.mark = 0;
  } else if (ems < -furthestBack) {
    endWord(place);
  } else {
    overlaps_ = true;
    // A blank that is taken back was none.
    if (size_ > 0 && line().back() == ' ' && segments_.back().begin < size_)
      --size_;
    beginSegment(place, false);
  }
}

void TextLayout::endString(double x, double y, double spacing) {
  pen_.x = x;
  pen_.y = y;
  spacing_ = spacing;
  const double to = along(x, y);
  right_ = std::max(right_, to);
  if (!segments_.empty())
    segments_.back().to = to;
}

bool TextLayout::isRepeated() const noexcept {
  const double most = repeatedShift * present_.place.em;
  if (!(std::abs(present_.place.x - last_.place.x) <= most) ||
      !(std::abs(present_.place.y - last_.place.y) <= most) || last_.end > present_.begin)
    return false;
  std::string_view before = line().substr(last_.begin, last_.end - last_.begin);
  std::string_view now = line().substr(present_.begin);
  while (before.starts_with(' '))
    before.remove_prefix(1);
  while (now.starts_with(' '))
    now.remove_prefix(1);
  return !now.empty() && before == now;
}

void TextLayout::endShowing() {
  present_.end = size_;
  if (isRepeated()) {
    size_ = present_.begin;
    segments_.resize(std::max<std::size_t>(present_.segments, 1));
    while (!ligatures_.empty() && ligatures_.back().first >= size_)
      ligatures_.pop_back();
    accent_ = {};
    return;
  }
  last_ = present_;
}

void TextLayout::appendGlyph(const Font &font, const Glyph &glyph) {
  const std::string_view text = font.textOf(glyph);
  traits_ |= glyph.flags & Glyph::lineTraits;
  if ((glyph.flags & Glyph::isRightToLeft) != 0 && text.size() > 2)
    ligatures_.emplace_back(size_, text.size());
  if ((glyph.flags & Glyph::isAccent) != 0)
    accent_ = {size_, size_ + text.size(), glyph.more};
  appendBytes(text);
}

/// The first glyph of a string may be part of the glyph before it.
void TextLayout::appendFirstGlyph(const Font &font, const Glyph &glyph) {
  const char32_t mark = pendingMark_;
  const bool overlaps = overlaps_;
  pendingMark_ = 0;
  overlaps_ = false;
  if (overlaps && (glyph.flags & Glyph::isAccent) != 0 && size_ > 0 && line().back() != ' ') {
    std::string text;
    appendUtf8(text, glyph.more);
    appendBytes(text);
    traits_ |= Glyph::mayCompose;
    return;
  }
  const std::size_t begin = size_;
  appendGlyph(font, glyph);
  if (mark == 0 || size_ == begin)
    return;
  const std::string shown(line().substr(begin));
  std::size_t letterEnd = 0;
  std::string text;
  appendUtf8(text, dotted(takeUtf8(shown, letterEnd)));
  appendUtf8(text, mark);
  text.append(shown, letterEnd);
  size_ = begin;
  appendBytes(text);
  traits_ |= Glyph::mayCompose;
}

/// The common case: glyphs of a few bytes that stand behind each other.
void TextLayout::appendSimple(Font &font, std::string_view bytes, Extent &extent) {
  constexpr std::uint8_t special = Glyph::isLong | Glyph::isAccent | Glyph::isRightToLeft;
  extent.codes += bytes.size();
  makeRoom(bytes.size() * Glyph::room);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const Glyph &glyph = font.simpleGlyph(static_cast<unsigned char>(bytes[i]));
    extent.advance += glyph.advance;
    extent.blanks += bytes[i] == ' ' ? 1 : 0;
    if ((glyph.flags & special) != 0) {
      appendGlyph(font, glyph);
      makeRoom((bytes.size() - i) * Glyph::room);
      continue;
    }
    std::memcpy(line_.data() + size_, glyph.text.data(), Glyph::room);
    size_ += glyph.length;
    traits_ |= glyph.flags;
  }
}

TextLayout::Extent TextLayout::append(Font &font, std::string_view bytes) {
  Extent extent;
  secondGlyph_ = 0;
  const bool isPair = font.isSimple() && bytes.size() == 2;
  if ((pendingMark_ != 0 || overlaps_) && !bytes.empty()) {
    CharacterMap::Code code{};
    const Glyph &glyph = font.takeGlyph(bytes, code);
    extent = {glyph.advance, 1, code.length == 1 && code.value == ' ' ? 1U : 0U};
    appendFirstGlyph(font, glyph);
  }
  if (font.isSimple()) {
    const auto last = static_cast<unsigned char>(isPair ? bytes.back() : ' ');
    appendSimple(font, bytes, extent);
    if (const Glyph &glyph = font.simpleGlyph(last); isPair && glyph.flags == 0)
      secondGlyph_ = size_ - glyph.length;
    return extent;
  }
  while (!bytes.empty()) {
    CharacterMap::Code code{};
    const Glyph &glyph = font.takeGlyph(bytes, code);
    extent.advance += glyph.advance;
    extent.blanks += code.length == 1 && code.value == ' ' ? 1 : 0;
    ++extent.codes;
    appendGlyph(font, glyph);
  }
  return extent;
}

TextLayout::Extent TextLayout::measure(Font &font, std::string_view bytes) {
  Extent extent;
  while (!bytes.empty()) {
    CharacterMap::Code code{};
    extent.advance += font.takeGlyph(bytes, code).advance;
    extent.blanks += code.length == 1 && code.value == ' ' ? 1 : 0;
    ++extent.codes;
  }
  return extent;
}

void TextLayout::appendText(std::string_view text) {
  TextTraits traits;
  const std::string form = normalised(text, traits);
  if (!isLineOpen_)
    beginLine(pen_);
  traits_ |= static_cast<std::uint8_t>((traits.mayCompose ? Glyph::mayCompose : 0) |
                                       (traits.isRightToLeft ? Glyph::isRightToLeft : 0));
  // It stands in reading order as it is.
  if (traits.isRightToLeft)
    ligatures_.emplace_back(size_, form.size());
  appendBytes(form);
}

/// The line as it is seen, then in reading order.
std::string TextLayout::turnedLine() const {
  std::vector<std::size_t> order(segments_.size());
  for (std::size_t i = 0; i < order.size(); ++i)
    order[i] = i;
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return segments_[a].from < segments_[b].from;
  });
  std::string seen;
  std::vector<std::pair<std::size_t, std::size_t>> clusters;
  double pen = 0;
  for (const std::size_t i : order) {
    const Segment &segment = segments_[i];
    const bool isLast = i + 1 == segments_.size();
    const std::size_t end =
        isLast ? size_ : segments_[i + 1].begin - (segments_[i + 1].hasBlankBefore ? 1 : 0);
    if (!seen.empty() && segment.from - pen > widestGap * origin_.em)
      seen += ' ';
    pen = segment.to;
    const auto isBefore = [](const auto &ligature, std::size_t at) { return ligature.first < at; };
    for (auto ligature =
             std::lower_bound(ligatures_.begin(), ligatures_.end(), segment.begin, isBefore);
         ligature != ligatures_.end() && ligature->first < end; ++ligature)
      clusters.emplace_back(ligature->first - segment.begin + seen.size(), ligature->second);
    seen += line().substr(segment.begin, end - std::min(segment.begin, end));
  }
  return inReadingOrder(seen, clusters);
}

LinePlace TextLayout::linePlace(const PenPlace &origin, double left, double right) noexcept {
  const double begin = origin.x * origin.directionX + origin.y * origin.directionY;
  LinePlace place;
  place.left = begin + left;
  place.right = begin + right;
  place.base = origin.y * origin.directionX - origin.x * origin.directionY;
  place.height = origin.height;
  place.directionX = origin.directionX;
  place.directionY = origin.directionY;
  return place;
}

void TextLayout::endPage() {
  endLine();
  flow_.end();
}

void TextLayout::endLine() {
  if (!isLineOpen_)
    return;
  std::string turned;
  std::string_view text = line();
  if ((traits_ & Glyph::isRightToLeft) != 0)
    text = turned = turnedLine();
  if ((traits_ & Glyph::mayCompose) != 0) {
    TextTraits traits;
    text = turned = normalised(text, traits);
  }
  flow_.addLine(text, linePlace(origin_, left_, right_));
  isLineOpen_ = false;
  size_ = 0;
  traits_ = 0;
  segments_.clear();
  ligatures_.clear();
  last_ = {};
  accent_ = {};
  pendingMark_ = 0;
  overlaps_ = false;
  secondGlyph_ = 0;
}

} // namespace searchsystem
