#include "readers/documents/ContentInterpreter.h"

#include "readers/documents/Arena.h"
#include "readers/documents/CharacterClass.h"
#include "readers/documents/ObjectParser.h"
#include "readers/documents/Utf8.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace searchsystem {

namespace {

constexpr std::size_t mostStreams = 100'000;
constexpr std::size_t mostAnnotations = 100'000;
constexpr std::size_t mostMarks = 10'000;
constexpr std::size_t mostForms = 100'000;
/// Strings are shown in parts of this many bytes.
constexpr std::size_t longestPart = 2048;
/// What Tf takes at most; further operands in front are of no use to any operator.
constexpr std::size_t mostOperands = 16;

Matrix matrixOf(Document &document, std::span<const Object> items) {
  if (items.size() < 6)
    return {};
  const auto item = [&](std::size_t i) { return document.resolve(items[i]).number(); };
  return {item(0), item(1), item(2), item(3), item(4), item(5)};
}

double numberAt(std::span<const Object> operands, std::size_t fromEnd) noexcept {
  return fromEnd < operands.size() ? operands[operands.size() - 1 - fromEnd].number() : 0;
}

/// Operators have three letters at most.
constexpr std::uint32_t code(std::string_view operation) noexcept {
  std::uint32_t value = 0;
  for (const char c : operation.substr(0, 4))
    value = value << 8 | static_cast<unsigned char>(c);
  return value;
}

} // namespace

/// One content stream, or several as one, which come in pieces.
class ContentInterpreter::Run {
public:
  explicit Run(ContentInterpreter &interpreter) : interpreter_(interpreter) {}

  void take(std::string_view piece) {
    bytes_ += piece;
    if (bytes_.size() >= enough_)
      carryOut(ObjectParser::Bytes::moreToCome);
  }
  void finish() { carryOut(ObjectParser::Bytes::all); }

private:
  static constexpr std::size_t leastPiece = 4096;

  void carryOut(ObjectParser::Bytes ending) {
    // Operands may be views into the bytes, so these stay from the last operator on.
    std::size_t done = 0;
    operands_.clear();
    arena_.clear();
    parser_.reset(bytes_, ending);
    for (;;) {
      if (isInImage_) {
        if (!passImage(ending))
          break;
        done = parser_.position();
      }
      const Object object = parser_.next();
      if (object.kind() == Object::Kind::incomplete || object.kind() == Object::Kind::end)
        break;
      if (object.kind() != Object::Kind::keyword) {
        if (operands_.size() == mostOperands)
          operands_.erase(operands_.begin());
        operands_.push_back(object);
        continue;
      }
      if (object.bytes() == "ID")
        isInImage_ = true;
      else
        interpreter_.perform(object.bytes(), operands_);
      done = parser_.position();
      operands_.clear();
      arena_.clear();
    }
    bytes_.erase(0, isInImage_ ? parser_.position() : done);
    // What had to be left is looked at again when there is twice as much: linear in the whole.
    enough_ = std::max(leastPiece, bytes_.size() * 2);
  }

  /// Looks for the end of an inline image: EI between blanks, and behind it what looks like
  /// content.
  bool passImage(ObjectParser::Bytes ending) {
    constexpr std::size_t lookedAt = 12;
    for (std::size_t at = parser_.position(); at + 3 <= bytes_.size(); ++at) {
      at = bytes_.find("EI", at + 1);
      if (at == std::string::npos)
        break;
      const std::size_t end = at + 2;
      if (ending == ObjectParser::Bytes::moreToCome && end + lookedAt > bytes_.size()) {
        parser_.setPosition(at - 1);
        return false;
      }
      const std::string_view behind = std::string_view(bytes_).substr(end, lookedAt);
      const auto isText = [](char c) {
        return CharacterClass::isBlank(c) ? c != '\0' : c > ' ' && c < '\x7F';
      };
      if (CharacterClass::isBlank(bytes_[at - 1]) &&
          (behind.empty() || CharacterClass::isBlank(behind[0])) &&
          std::all_of(behind.begin(), behind.end(), isText)) {
        parser_.setPosition(end);
        isInImage_ = false;
        return true;
      }
    }
    parser_.setPosition(
        std::max(parser_.position(), bytes_.size() - std::min<std::size_t>(bytes_.size(), 3)));
    return false;
  }

  ContentInterpreter &interpreter_;
  Arena arena_;
  ObjectParser parser_{arena_, ObjectParser::Syntax::content};
  std::string bytes_;
  std::size_t enough_ = leastPiece;
  std::vector<Object> operands_;
  bool isInImage_ = false;
};

ContentInterpreter::ContentInterpreter(Document &document, const CharacterMaps &maps,
                                       TextOutput &output)
    : document_(document), fonts_(document, maps), optionalContent_(document), output_(output),
      layout_(output) {}

void ContentInterpreter::readPage(const Page &page) {
  fonts_.beginPage();
  state_ = {};
  saved_.clear();
  savedBelow_ = unsaved_ = 0;
  const auto sides = page.mediaBox.array();
  hasBox_ = sides.size() == 4;
  if (hasBox_) {
    const auto side = [&](std::size_t i) { return document_.resolve(sides[i]).number(); };
    box_ = {std::min(side(0), side(2)), std::min(side(1), side(3)), std::max(side(0), side(2)),
            std::max(side(1), side(3))};
    hasBox_ = box_.right > box_.left && box_.top > box_.bottom;
  }
  Resources resources{page.resources, {}};
  resources_ = &resources;

  const Object contents = document_.get(page.dictionary, "Contents");
  std::vector<Object> parts;
  if (contents.isStream())
    parts.push_back(contents);
  for (const Object &part : contents.array().first(std::min(contents.array().size(), mostStreams)))
    parts.push_back(document_.resolve(part));
  std::vector<const Stream *> streams;
  for (const Object &part : parts)
    if (part.isStream())
      streams.push_back(part.stream());
  run(streams);
  endMarksFrom(0);
  layout_.endPage();
  readAnnotations(page);
  resources_ = nullptr;
  output_.endPage();
}

void ContentInterpreter::run(std::span<const Stream *const> streams) {
  Run run(*this);
  for (const Stream *const stream : streams) {
    document_.decode(*stream, [&](std::string_view piece) {
      content_ += piece.size();
      run.take(piece);
      return !hasMetLimit() && !output_.isStopped();
    });
    // Streams are divided between words only.
    run.take("\n");
  }
  if (!hasMetLimit() && !output_.isStopped())
    run.finish();
}

Object ContentInterpreter::resource(std::string_view kind, std::string_view name) {
  return document_.get(resources_->dictionary, kind).dictionary().get(name);
}

void ContentInterpreter::perform(std::string_view operation, std::span<const Object> operands) {
  if (operation.size() > 3)
    return;
  switch (code(operation)) {
  case code("q"):
    if (saved_.size() < deepestState)
      saved_.push_back(state_);
    else
      ++unsaved_;
    break;
  case code("Q"):
    if (unsaved_ > 0) {
      --unsaved_;
    } else if (saved_.size() > savedBelow_) {
      state_ = saved_.back();
      saved_.pop_back();
    }
    break;
  case code("cm"):
    state_.matrix = matrixOf(document_, operands).then(state_.matrix);
    break;
  case code("gs"):
    if (!operands.empty())
      setFontOfState(operands.back());
    break;
  case code("Do"):
    if (!operands.empty())
      draw(operands.back());
    break;
  case code("BMC"):
  case code("BDC"):
    beginMarked(operands);
    break;
  case code("EMC"):
    endMarked();
    break;
  default:
    performText(operation, operands);
    break;
  }
}

void ContentInterpreter::performText(std::string_view operation, std::span<const Object> operands) {
  switch (code(operation)) {
  case code("BT"):
    textMatrix_ = lineMatrix_ = {};
    break;
  case code("Tf"):
    if (operands.size() >= 2)
      setFont(operands[operands.size() - 2], operands.back().number());
    break;
  case code("Td"):
    nextLine(numberAt(operands, 1), numberAt(operands, 0));
    break;
  case code("TD"):
    state_.leading = -numberAt(operands, 0);
    nextLine(numberAt(operands, 1), numberAt(operands, 0));
    break;
  case code("Tm"):
    textMatrix_ = lineMatrix_ = matrixOf(document_, operands);
    break;
  case code("T*"):
    nextLine(0, -state_.leading);
    break;
  case code("Tc"):
    state_.characterSpacing = numberAt(operands, 0);
    break;
  case code("Tw"):
    state_.wordSpacing = numberAt(operands, 0);
    break;
  case code("Tz"):
    state_.scaling = numberAt(operands, 0) / 100;
    break;
  case code("TL"):
    state_.leading = numberAt(operands, 0);
    break;
  case code("Ts"):
    state_.rise = numberAt(operands, 0);
    break;
  case code("\""):
    state_.wordSpacing = numberAt(operands, 2);
    state_.characterSpacing = numberAt(operands, 1);
    [[fallthrough]];
  case code("'"):
    nextLine(0, -state_.leading);
    [[fallthrough]];
  case code("Tj"):
    if (!operands.empty())
      show(operands.last(1));
    break;
  case code("TJ"):
    if (!operands.empty())
      show(operands.back().array());
    break;
  default:
    break;
  }
}

void ContentInterpreter::setFont(const Object &name, double size) {
  state_.size = size;
  state_.font = fontNamed(name.name());
}

Font *ContentInterpreter::fontNamed(std::string_view name) {
  for (const auto &[known, font] : resources_->fonts)
    if (known == name)
      return font;
  Font *const font = fonts_.find(resource("Font", name));
  constexpr std::size_t mostKnown = 50;
  if (resources_->fonts.size() < mostKnown)
    resources_->fonts.emplace_back(name, font);
  return font;
}

void ContentInterpreter::setFontOfState(const Object &name) {
  const Dictionary parameters = document_.resolve(resource("ExtGState", name.name())).dictionary();
  const Object font = document_.get(parameters, "Font");
  if (font.array().size() != 2)
    return;
  state_.font = fonts_.find(font.array()[0]);
  state_.size = document_.resolve(font.array()[1]).number();
}

void ContentInterpreter::nextLine(double x, double y) {
  textMatrix_ = lineMatrix_ = lineMatrix_.movedBy(x, y);
}

ContentInterpreter::Baseline ContentInterpreter::baseline() const noexcept {
  const Matrix whole = textMatrix_.then(state_.matrix);
  const double width = std::hypot(whole.a, whole.b);
  const double height = std::hypot(whole.c, whole.d);
  const double size = state_.size * state_.font->emSize();
  PenPlace place;
  place.x = whole.e + state_.rise * whole.c;
  place.y = whole.f + state_.rise * whole.d;
  if (state_.font->isVertical()) {
    place.em = std::abs(size) * height;
    place.height = std::abs(size * state_.scaling) * width;
    const double length = size < 0 ? height : -height;
    place.directionX = whole.c / length;
    place.directionY = whole.d / length;
    return {place, whole.c, whole.d};
  }
  place.em = std::abs(size * state_.scaling) * width;
  place.height = std::abs(size) * height;
  const double length = size * state_.scaling < 0 ? -width : width;
  place.directionX = whole.a / length;
  place.directionY = whole.b / length;
  return {place, whole.a, whole.b};
}

bool ContentInterpreter::isOffPage(const PenPlace &place) const noexcept {
  return hasBox_ && (place.x < box_.left - place.em || place.x > box_.right + place.em ||
                     place.y < box_.bottom - place.em || place.y > box_.top + place.em);
}

void ContentInterpreter::show(std::span<const Object> strings) {
  hasMetText_ = true;
  if (state_.font == nullptr)
    return;
  const bool isVertical = state_.font->isVertical();
  const double scaling = isVertical ? 1 : state_.scaling;
  const double emSize = state_.font->emSize();
  const Baseline line = baseline();
  double way = 0;
  bool isShowing = false;
  for (const Object &item : strings) {
    if (item.isNumber()) {
      const double moved = -item.number() / 1000;
      way += moved * state_.size * scaling;
      const double ems = (isVertical ? -moved : moved) / emSize;
      if (isShowing && hiddenMarks_ == 0 &&
          (ems > TextLayout::widestGap || ems < -TextLayout::widestOverlap))
        layout_.beginString(line.at(way));
      continue;
    }
    std::string_view bytes = item.string();
    while (!bytes.empty()) {
      // An even number, so that codes of two bytes stay whole.
      const std::string_view part = bytes.substr(0, longestPart);
      bytes.remove_prefix(part.size());
      if (!isShowing && hiddenMarks_ == 0) {
        layout_.beginShowing(line.at(way));
        isShowing = true;
      }
      showPart(part, line, way);
    }
  }
  if (isShowing)
    layout_.endShowing();
  textMatrix_ = isVertical ? textMatrix_.movedBy(0, way) : textMatrix_.movedBy(way, 0);
}

/// Some writers kern with a blank that they make as narrow as that.
bool ContentInterpreter::closesBlanks(Font &font) const {
  constexpr double widest = 0.05;
  return state_.wordSpacing < 0 && font.isSimple() &&
         font.simpleGlyph(' ').advance * state_.size + state_.characterSpacing +
                 state_.wordSpacing <
             widest * state_.size;
}

TextLayout::Extent ContentInterpreter::appendWords(Font &font, std::string_view bytes) {
  TextLayout::Extent whole;
  while (!bytes.empty()) {
    const bool isBlank = bytes[0] == ' ';
    const std::string_view part = bytes.substr(0, isBlank ? 1 : bytes.find(' '));
    bytes.remove_prefix(part.size());
    const TextLayout::Extent extent =
        isBlank ? TextLayout::measure(font, part) : layout_.append(font, part);
    whole.advance += extent.advance;
    whole.codes += extent.codes;
    whole.blanks += extent.blanks;
  }
  return whole;
}

void ContentInterpreter::showPart(std::string_view bytes, const Baseline &baseline, double &way) {
  Font &font = *state_.font;
  if (!replacement_.empty() && hiddenMarks_ == 0) {
    layout_.appendText(replacement_);
    replacement_.clear();
  }
  const bool isSeen = !isSilent() && !isOffPage(baseline.at(way));
  const TextLayout::Extent extent = !isSeen              ? TextLayout::measure(font, bytes)
                                    : closesBlanks(font) ? appendWords(font, bytes)
                                                         : layout_.append(font, bytes);
  const double spacing = static_cast<double>(extent.codes) * state_.characterSpacing +
                         static_cast<double>(extent.blanks) * state_.wordSpacing;
  if (font.isVertical())
    way -= extent.advance * state_.size - spacing;
  else
    way += (extent.advance * state_.size + spacing) * state_.scaling;
  if (hiddenMarks_ > 0)
    return;
  const PenPlace end = baseline.at(way);
  const double perUnit = state_.size != 0 ? end.em / std::abs(state_.size * font.emSize()) : 0;
  layout_.endString(end.x, end.y, state_.characterSpacing * perUnit);
}

void ContentInterpreter::beginMarked(std::span<const Object> operands) {
  if (marks_.size() >= mostMarks) {
    marks_.push_back(Mark::plain);
    return;
  }
  Mark mark = Mark::plain;
  if (operands.size() >= 2) {
    const Object &tag = operands[operands.size() - 2];
    Object properties = operands.back();
    if (properties.isName())
      properties = resource("Properties", properties.name());
    if (tag.isName("OC")) {
      if (optionalContent_.isHidden(properties))
        mark = Mark::hidden;
    } else if (const Object text =
                   document_.get(document_.resolve(properties).dictionary(), "ActualText");
               text.isString()) {
      mark = Mark::replaced;
      if (!isSilent())
        replacement_ = textStringToUtf8(text.string());
    }
  }
  marks_.push_back(mark);
  hiddenMarks_ += mark == Mark::hidden ? 1 : 0;
  replacingMarks_ += mark == Mark::replaced ? 1 : 0;
}

void ContentInterpreter::endMarked() {
  if (!marks_.empty())
    endMarksFrom(marks_.size() - 1);
}

void ContentInterpreter::endMarksFrom(std::size_t count) {
  while (marks_.size() > count) {
    hiddenMarks_ -= marks_.back() == Mark::hidden ? 1 : 0;
    if (marks_.back() == Mark::replaced && --replacingMarks_ == 0 && !replacement_.empty()) {
      // It stood for something that is no text.
      hasMetText_ = true;
      if (hiddenMarks_ == 0)
        layout_.appendText(replacement_);
      replacement_.clear();
    }
    marks_.pop_back();
  }
}

void ContentInterpreter::draw(const Object &name) {
  const Object reference = resource("XObject", name.name());
  const std::uint32_t number = reference.reference().number;
  if (hiddenMarks_ > 0 || formsWithoutText_.contains(number))
    return;
  const Object form = document_.resolve(reference);
  if (!form.isStream())
    return;
  const Dictionary dictionary = form.dictionary();
  if (document_.get(dictionary, "Subtype").name() != "Form")
    return;
  if (optionalContent_.isHidden(dictionary.get("OC"))) {
    hasMetText_ = true;
    return;
  }
  const bool hadMetText = hasMetText_;
  hasMetText_ = false;
  drawForm(form, *form.stream());
  if (!hasMetText_ && number != 0 && formsWithoutText_.size() < mostForms)
    formsWithoutText_.insert(number);
  hasMetText_ = hasMetText_ || hadMetText;
}

void ContentInterpreter::drawForm(const Object &form, const Stream &stream) {
  const std::uint32_t number = stream.object.number;
  const bool isOpen = std::find(openForms_.begin(), openForms_.end(), number) != openForms_.end();
  content_ += costOfForm;
  if (isOpen || openForms_.size() >= deepestForm || hasMetLimit()) {
    // What it would show is not known.
    hasMetText_ = true;
    return;
  }
  const State state = state_;
  const std::size_t below = std::exchange(savedBelow_, saved_.size());
  const std::size_t unsaved = std::exchange(unsaved_, 0);
  const Matrix textMatrix = textMatrix_, lineMatrix = lineMatrix_;
  const std::size_t marks = marks_.size();
  Resources *const outer = resources_;
  const Object own = document_.get(form.dictionary(), "Resources");
  Resources inner{own.dictionary(), {}};
  if (own.isDictionary())
    resources_ = &inner;
  state_.matrix =
      matrixOf(document_, document_.get(form.dictionary(), "Matrix").array()).then(state_.matrix);
  openForms_.push_back(number);
  const Stream *const streams[] = {&stream};
  run(streams);
  openForms_.pop_back();
  endMarksFrom(marks);
  resources_ = outer;
  textMatrix_ = textMatrix;
  lineMatrix_ = lineMatrix;
  saved_.resize(savedBelow_);
  savedBelow_ = below;
  unsaved_ = unsaved;
  state_ = state;
}

void ContentInterpreter::readAnnotations(const Page &page) {
  constexpr std::int64_t hiddenFlag = 2, noViewFlag = 32;
  const Object annotations = document_.get(page.dictionary, "Annots");
  const auto items = annotations.array();
  for (const Object &item : items.first(std::min(items.size(), mostAnnotations))) {
    if (hasMetLimit() || output_.isStopped())
      break;
    const Dictionary annotation = document_.resolve(item).dictionary();
    if ((document_.get(annotation, "F").integer() & (hiddenFlag | noViewFlag)) != 0 ||
        optionalContent_.isHidden(annotation.get("OC")))
      continue;
    const Dictionary appearances = document_.get(annotation, "AP").dictionary();
    Object normal = document_.get(appearances, "N");
    if (normal.isDictionary())
      normal = document_.get(normal.dictionary(), document_.get(annotation, "AS").name());
    if (!normal.isStream())
      continue;
    // Its place on the page is of no account: it begins a line of its own.
    state_ = {};
    hasBox_ = false;
    drawForm(normal, *normal.stream());
    layout_.endPage();
  }
}

} // namespace searchsystem
