#pragma once

#include "readers/documents/TextOutput.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Where a line lies on its page: from where to where along its direction, and how high across it.
struct LinePlace {
  double left = 0, right = 0;
  double base = 0;
  /// That of the letters.
  double height = 1;
  double directionX = 1, directionY = 0;
};

/// Hands lines on in the order in which they come, but for those that stand in the margin beside a
/// column of text: programs write them between the lines of the column, and its sentences are not
/// to be torn by them. These follow when the text that they stand beside has ended.
class LineFlow {
public:
  explicit LineFlow(TextOutput &output) : output_(output) {}

  void addLine(std::string_view line, const LinePlace &place);
  /// Whether a line that begins here stands in the margin of the column.
  [[nodiscard]] bool isInMargin(const LinePlace &place) const noexcept;
  /// Behind all lines of a page, or of something else that has its own.
  void end();

private:
  static constexpr std::size_t mostHeld = 40;

  [[nodiscard]] bool isBeside(const LinePlace &place) const noexcept;
  [[nodiscard]] bool runsAlike(const LinePlace &place) const noexcept;
  void handOverHeld();

  TextOutput &output_;
  /// From the first to the last end of the lines so far, and the height of the last one.
  LinePlace column_;
  std::size_t columnLines_ = 0;
  std::vector<std::string> held_;
  double heldBase_ = 0;
};

} // namespace searchsystem
