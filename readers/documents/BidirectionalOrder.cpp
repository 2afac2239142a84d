#include "readers/documents/BidirectionalOrder.h"

#include "readers/documents/Utf8.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdint>

namespace searchsystem {

namespace {

enum class Direction : std::uint8_t { left, right, number, neutral };

struct Cluster {
  std::size_t begin, length;
  Direction direction;
  std::uint8_t level = 0;
};

Direction directionOf(char32_t c) noexcept {
  const utf8proc_property_t *const property =
      utf8proc_get_property(static_cast<utf8proc_int32_t>(c));
  switch (property->bidi_class) {
  case UTF8PROC_BIDI_CLASS_L:
    return Direction::left;
  case UTF8PROC_BIDI_CLASS_R:
  case UTF8PROC_BIDI_CLASS_AL:
    return Direction::right;
  case UTF8PROC_BIDI_CLASS_EN:
  case UTF8PROC_BIDI_CLASS_AN:
    return Direction::number;
  case UTF8PROC_BIDI_CLASS_NSM:
    return c >= 0x590 && c < 0x900 ? Direction::right : Direction::neutral;
  default:
    return Direction::neutral;
  }
}

bool joinsNumbers(std::string_view text) noexcept {
  return text == "." || text == "," || text == ":" || text == "/" || text == "-" || text == "+";
}

class Line {
public:
  Line(std::string_view seen, const std::vector<std::pair<std::size_t, std::size_t>> &joined)
      : seen_(seen) {
    auto next = joined.begin();
    for (std::size_t at = 0; at < seen.size();) {
      const std::size_t begin = at;
      const Direction direction = directionOf(takeUtf8(seen, at));
      while (next != joined.end() && next->first < begin)
        ++next;
      if (next != joined.end() && next->first == begin)
        at = std::max(at, std::min(begin + next->second, seen.size()));
      clusters_.push_back({begin, at - begin, direction});
    }
  }

  [[nodiscard]] std::string inReadingOrder() {
    const auto count = [&](Direction direction) {
      return std::count_if(clusters_.begin(), clusters_.end(),
                           [&](const Cluster &cluster) { return cluster.direction == direction; });
    };
    if (count(Direction::right) >= count(Direction::left))
      setLevelsRightToLeft();
    else
      setLevelsLeftToRight();
    for (const std::uint8_t level : {std::uint8_t{2}, std::uint8_t{1}})
      turnRunsFrom(level);
    std::string text;
    for (const Cluster &cluster : clusters_)
      text += seen_.substr(cluster.begin, cluster.length);
    return text;
  }

private:
  /// Islands of other scripts and of numbers in a line from right to left.
  void setLevelsRightToLeft() {
    for (Cluster &cluster : clusters_)
      cluster.level = 1;
    setIslands(0, clusters_.size());
  }

  void setLevelsLeftToRight() {
    std::size_t first = clusters_.size(), last = 0;
    const auto close = [&] {
      for (std::size_t i = first; i <= last && i < clusters_.size(); ++i)
        clusters_[i].level = 1;
      if (first <= last)
        setIslands(first, last + 1);
      first = clusters_.size();
      last = 0;
    };
    for (std::size_t i = 0; i < clusters_.size(); ++i) {
      if (clusters_[i].direction == Direction::left) {
        close();
      } else if (clusters_[i].direction == Direction::right) {
        first = std::min(first, i);
        last = i;
      }
    }
    close();
  }

  void setIslands(std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) {
      const Direction direction = clusters_[i].direction;
      if (direction != Direction::left && direction != Direction::number)
        continue;
      bool hasLetters = direction == Direction::left;
      std::size_t last = i;
      for (std::size_t j = i + 1; j < end && clusters_[j].direction != Direction::right; ++j) {
        if (clusters_[j].direction == Direction::neutral)
          continue;
        const bool joins =
            hasLetters || j == last + 1 ||
            (j == last + 2 && clusters_[j].direction == Direction::number &&
             joinsNumbers(seen_.substr(clusters_[last + 1].begin, clusters_[last + 1].length)));
        if (!joins)
          break;
        hasLetters = hasLetters || clusters_[j].direction == Direction::left;
        last = j;
      }
      for (; i <= last; ++i)
        clusters_[i].level = 2;
      --i;
    }
  }

  void turnRunsFrom(std::uint8_t level) {
    const auto isIn = [&](const Cluster &cluster) { return cluster.level >= level; };
    for (auto at = clusters_.begin(); at != clusters_.end();) {
      const auto begin = std::find_if(at, clusters_.end(), isIn);
      const auto end = std::find_if_not(begin, clusters_.end(), isIn);
      std::reverse(begin, end);
      at = end;
    }
  }

  std::string_view seen_;
  std::vector<Cluster> clusters_;
};

} // namespace

std::string inReadingOrder(std::string_view seen,
                           const std::vector<std::pair<std::size_t, std::size_t>> &clusters) {
  return Line(seen, clusters).inReadingOrder();
}

} // namespace searchsystem
