#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/ReadBounds.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <unordered_map>

namespace searchsystem {

/// The ranges of a file that parses of pages, or of the mark, have read. In a damaged document
/// thousands of parses may begin within such a range and run to the same end, nearly always in
/// vain. Once the bound is spent, they are skipped.
///
/// Ownership: the bound lives longer. Threads: one at a time. Throws `std::bad_alloc`.
class PassedRanges {
public:
  explicit PassedRanges(ReadBound &bound) noexcept : bound_(bound) {}

  /// Whether to parse from `start` on. Ends the parse where it would meet a range to be skipped.
  [[nodiscard]] bool admits(long start, CPDFSection &section) {
    if (!parses_.try_emplace(start, start).second)
      return false;
    if (!bound_.isSpent())
      return true;
    const auto next = ranges_.upper_bound(start);
    section.EndAt(next != ranges_.end() ? next->first : CPDFSection::noEnd);
    return next == ranges_.begin() || std::prev(next)->second <= start;
  }

  /// Notes the parse that has read from `start` on.
  void note(long start, const CPDFSection &section) {
    const long end = section.parsedTo();
    bound_.note(end - start);
    parses_[start] = end;
    if (!bound_.isSpent())
      return;
    // Sound documents never need ranges.
    if (ranges_.empty())
      for (const auto &[earlierStart, earlierEnd] : parses_)
        add(earlierStart, earlierEnd);
    add(start, end);
  }

private:
  void add(long start, long end) {
    auto range = ranges_.upper_bound(start);
    if (range != ranges_.begin() && std::prev(range)->second >= start)
      start = (--range)->first;
    for (; range != ranges_.end() && range->first <= end; range = ranges_.erase(range))
      end = std::max(end, range->second);
    ranges_[start] = end;
  }

  ReadBound &bound_;
  /// Where each parse began and ended.
  std::unordered_map<long, long> parses_;
  /// The same ranges, joined where they meet.
  std::map<long, long> ranges_;
};

} // namespace searchsystem
