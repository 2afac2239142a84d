#pragma once

#include "readers/documents/Font.h"
#include "readers/documents/LineFlow.h"
#include "readers/documents/TextOutput.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace searchsystem {

/// Where the pen stands on the page, and how the letters that follow lie there.
struct PenPlace {
  double x = 0;
  double y = 0;
  /// The direction of writing, of length 1.
  double directionX = 1;
  double directionY = 0;
  /// How large an em is along the direction, and across it. Not negative.
  double em = 1;
  double height = 1;
};

/// Makes lines of the strings that a page shows, in the order in which they are shown: finds from
/// their places where words and lines end, puts accents on their letters, drops what is shown twice
/// at a place to look bold, and brings text that runs from right to left into reading order.
class TextLayout {
public:
  /// How far the pen may move on, in ems, within a word, and how far back.
  static constexpr double widestGap = 0.12;
  static constexpr double widestOverlap = 0.2;

  /// How far a string has moved the pen, in units of the font's size, and what else it holds.
  struct Extent {
    double advance = 0;
    std::size_t codes = 0;
    /// Codes of one byte that are a blank: these are widened by the word spacing.
    std::size_t blanks = 0;
  };

  explicit TextLayout(TextOutput &output) : flow_(output) {}

  /// One operator shows text, beginning here.
  void beginShowing(const PenPlace &place);
  void endShowing();
  /// Within that, the pen has been put down again, further than the two distances above.
  void beginString(const PenPlace &place);
  /// The pen stands here after a string; of the way from its last glyph `spacing` is no part of it.
  void endString(double x, double y, double spacing);

  /// Appends what these bytes show; not many at a time, since a line is cut only between strings.
  Extent append(Font &font, std::string_view bytes);
  /// What `append` answers, without the text.
  [[nodiscard]] static Extent measure(Font &font, std::string_view bytes);
  /// Appends text that does not come from glyphs, and is not normalised.
  void appendText(std::string_view text);
  /// Ends the line, and with it all that has places on one page.
  void endPage();

private:
  static constexpr std::size_t longestLine = std::size_t{64} << 10;

  /// Glyphs that are shown without a break in between: where they begin in the line, from where to
  /// where they reach along it, and whether a blank was put before them.
  struct Segment {
    std::size_t begin;
    double from, to;
    bool hasBlankBefore;
  };
  struct Shown {
    PenPlace place;
    std::size_t begin = 0, end = 0, segments = 0;
  };
  struct Accent {
    std::size_t begin = 0, end = 0;
    char32_t mark = 0;
  };

  void appendGlyph(const Font &font, const Glyph &glyph);
  void appendFirstGlyph(const Font &font, const Glyph &glyph);
  void appendSimple(Font &font, std::string_view bytes, Extent &extent);
  void appendBytes(std::string_view bytes);
  void makeRoom(std::size_t more);
  void beginLine(const PenPlace &place);
  void endLine();
  [[nodiscard]] static LinePlace linePlace(const PenPlace &origin, double left,
                                           double right) noexcept;
  void endWord(const PenPlace &place);
  void beginSegment(const PenPlace &place, bool hasBlankBefore);
  void dividePair();
  void moveBack(const PenPlace &place, double ems);
  [[nodiscard]] bool isRepeated() const noexcept;
  [[nodiscard]] double along(double x, double y) const noexcept {
    return (x - origin_.x) * origin_.directionX + (y - origin_.y) * origin_.directionY;
  }
  [[nodiscard]] std::string_view line() const noexcept { return {line_.data(), size_}; }
  [[nodiscard]] std::string turnedLine() const;

  LineFlow flow_;
  /// The line, of which `size_` bytes are in use.
  std::string line_;
  std::size_t size_ = 0;
  std::uint8_t traits_ = 0;
  std::vector<Segment> segments_;
  /// Glyphs of several characters that run from right to left: places and lengths.
  std::vector<std::pair<std::size_t, std::size_t>> ligatures_;

  bool isLineOpen_ = false;
  PenPlace origin_;
  /// How far along it reaches, from there.
  double left_ = 0, right_ = 0;
  bool isInMargin_ = false;
  PenPlace pen_;
  double spacing_ = 0;
  /// Where the second of the two glyphs begins of which the last string consists; 0 if of others.
  std::size_t secondGlyph_ = 0;
  Shown present_;
  Shown last_;

  Accent accent_;
  /// The mark that the next letter gets.
  char32_t pendingMark_ = 0;
  /// The next glyph lies over the last one.
  bool overlaps_ = false;
};

} // namespace searchsystem
