#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/ReadBounds.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

namespace searchsystem {

/// The ranges of a file that parses of pages, or of the mark, have read. In a damaged document
/// thousands may begin within what one has read and would run to the same end, nearly always for
/// nothing. Once their bound is spent, such parses are skipped.
///
/// Ownership: the bounds live longer. Threads: one at a time. Throws `std::bad_alloc`.
class PassedRanges {
public:
  explicit PassedRanges(ReadBounds &bounds) noexcept : bounds_(bounds) {}

  /// Notes a parse that has read from `start` to `end`.
  void note(long start, long end) {
    bounds_.note(ReadBounds::Kind::nodes, end - start);
    if (!isSpent()) {
      // Sound documents never need them as ranges.
      noted_.emplace_back(start, end);
      return;
    }
    for (const auto &[earlierStart, earlierEnd] : std::exchange(noted_, {}))
      add(earlierStart, earlierEnd);
    add(start, end);
  }

  /// Whether a parse that begins at `start` can be skipped.
  [[nodiscard]] bool holds(long start) const noexcept {
    return isSpent() && isPassed(start, ranges_.upper_bound(start));
  }

  /// Where a parse that begins at `start` meets a range that can be skipped.
  [[nodiscard]] long nextFrom(long start) const noexcept {
    const auto next = ranges_.upper_bound(start);
    const bool isMet = isSpent() && next != ranges_.end() && !isPassed(start, next);
    return isMet ? next->first : CPDFSection::noEnd;
  }

private:
  /// Where each range begins and ends.
  using Ranges = std::map<long, long>;

  void add(long start, long end) {
    auto range = ranges_.upper_bound(start);
    if (range != ranges_.begin() && std::prev(range)->second >= start)
      start = (--range)->first;
    for (; range != ranges_.end() && range->first <= end; range = ranges_.erase(range))
      end = std::max(end, range->second);
    ranges_[start] = end;
  }

  [[nodiscard]] bool isSpent() const noexcept { return bounds_.isSpent(ReadBounds::Kind::nodes); }

  /// `next` is the first range behind `start`.
  [[nodiscard]] bool isPassed(long start, Ranges::const_iterator next) const noexcept {
    return next != ranges_.begin() && std::prev(next)->second > start;
  }

  ReadBounds &bounds_;
  std::vector<std::pair<long, long>> noted_;
  Ranges ranges_;
};

} // namespace searchsystem
