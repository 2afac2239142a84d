#include "readers/documents/LineFlow.h"

#include <algorithm>
#include <cmath>

namespace searchsystem {

namespace {

/// All in heights of letters. How far below a line the next one of the same text lies at most.
constexpr double furthestNextLine = 2.5;
constexpr double furthestMarginLine = 3;
constexpr double narrowestColumn = 10;
constexpr double leastDistance = 0.3;
/// Two directions are the same if their cosine is more.
constexpr double sameDirection = 0.98;

} // namespace

bool LineFlow::runsAlike(const LinePlace &place) const noexcept {
  return place.directionX * column_.directionX + place.directionY * column_.directionY >
         sameDirection;
}

bool LineFlow::isBeside(const LinePlace &place) const noexcept {
  const double distance = leastDistance * place.height;
  return place.left > column_.right + distance || place.right < column_.left - distance;
}

bool LineFlow::isInMargin(const LinePlace &place) const noexcept {
  return columnLines_ > 1 && runsAlike(place) && isBeside(place) &&
         column_.right - column_.left > narrowestColumn * column_.height;
}

void LineFlow::addLine(std::string_view line, const LinePlace &place) {
  if (line.find_first_not_of(' ') == std::string_view::npos)
    return;
  const double beside = held_.empty() ? column_.base : heldBase_;
  if (isInMargin(place) && held_.size() < mostHeld &&
      std::abs(place.base - beside) <= furthestMarginLine * place.height) {
    held_.emplace_back(line);
    heldBase_ = place.base;
    return;
  }
  const bool isSameColumn = columnLines_ > 0 && runsAlike(place) && !isBeside(place);
  const double down = column_.base - place.base;
  const double furthest = furthestNextLine * std::max(place.height, column_.height);
  if (isSameColumn && down > 0 && down <= furthest)
    output_.joinNext();
  else
    handOverHeld();
  output_.addLine(line);
  const double left = isSameColumn ? std::min(place.left, column_.left) : place.left;
  const double right = isSameColumn ? std::max(place.right, column_.right) : place.right;
  column_ = place;
  column_.left = left;
  column_.right = right;
  columnLines_ = isSameColumn ? columnLines_ + 1 : 1;
}

void LineFlow::handOverHeld() {
  for (const std::string &line : held_)
    output_.addLine(line);
  held_.clear();
}

void LineFlow::end() {
  handOverHeld();
  columnLines_ = 0;
}

} // namespace searchsystem
