#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/TokenReader.h"

#include <algorithm>
#include <iterator>
#include <map>

/// What parses of one kind have passed of a file, and how much they may read before what they would
/// read again is left out.
///
/// A damaged document may let thousands of parses begin within what one has read, and each would go
/// to the same end. A parse that begins there tells nothing new, or so nearly always; so once they
/// have read the file a few times over, it is taken for read. What a parse reads with its first
/// block does not count, so that this never concerns a document whose objects stand beside each
/// other, however small they are.
///
/// Threads: one at a time. Throws `std::bad_alloc`.
class PassedRanges {
public:
  explicit PassedRanges(long fileSize) noexcept
      : carefulBytesLeft_(carefulRounds * std::max(fileSize, 0L) + carefulBytesAtLeast) {}

  /// Notes a parse that has looked at the bytes from `start` to `end`, and read up to `stop`.
  void note(long start, long end, long stop) {
    carefulBytesLeft_ -= TokenReader::bytesBeyondFirstBlock(start, stop);
    auto range = ranges_.upper_bound(start);
    if (range != ranges_.begin() && std::prev(range)->second >= start)
      start = (--range)->first;
    for (; range != ranges_.end() && range->first <= end; range = ranges_.erase(range))
      end = std::max(end, range->second);
    ranges_[start] = end;
  }

  /// Whether enough has been read to leave out what was passed.
  [[nodiscard]] bool isWorn() const noexcept { return carefulBytesLeft_ <= 0; }

  /// Whether a parse that begins at `start` can be left out.
  [[nodiscard]] bool holds(long start) const noexcept {
    return isWorn() && isPassed(start, ranges_.upper_bound(start));
  }

  /// Where a parse that begins at `start` comes to what was passed, if that can be left out.
  [[nodiscard]] long nextFrom(long start) const noexcept {
    const auto next = ranges_.upper_bound(start);
    const bool isMet = isWorn() && next != ranges_.end() && !isPassed(start, next);
    return isMet ? next->first : CPDFSection::noEnd;
  }

private:
  static constexpr long carefulRounds = 2;
  static constexpr long carefulBytesAtLeast = 1 << 17;

  /// Where each range begins and ends.
  using Ranges = std::map<long, long>;

  /// `next` is the first range behind `start`.
  [[nodiscard]] bool isPassed(long start, Ranges::const_iterator next) const noexcept {
    return next != ranges_.begin() && std::prev(next)->second > start;
  }

  Ranges ranges_;
  long carefulBytesLeft_;
};
