#pragma once

#include "pdf_reader/LooseEnds.h"

#include <algorithm>
#include <cstddef>
#include <vector>

/// The lines that parses of pages have passed, inside and outside of objects. Where a later parse
/// comes to one of them as an earlier one did, it would go on as that one: it can end there. A
/// damaged document may let thousands of pages begin within one object without an end, and all of
/// them together read it once.
///
/// It matters for a line how the edges of blocks fall, which are counted from where a parse begins.
/// Only in a document that would have to be read many times over because of that, it is no more
/// looked at.
///
/// Threads: one at a time.
class PassedLines {
public:
  explicit PassedLines(long fileSize)
      : fileSize_(static_cast<std::size_t>(std::max(fileSize, 0L))),
        carefulBytesLeft_(carefulRounds * std::max(fileSize, 0L) + carefulBytesAtLeast) {}

  void beginParse(long start) noexcept { start_ = start; }

  /// The parse has succeeded and read up to `stop`.
  void endParse(long stop) noexcept {
    carefulBytesLeft_ -= std::max(stop - start_, 0L);
    unsureBefore_ = std::max(unsureBefore_, looseEnds_.lastMet(start_));
  }

  /// Notes that a line that begins at `position` is read when nothing waits from lines before it.
  /// True when an earlier parse has come there alike. Throws `std::bad_alloc`.
  bool pass(long position, bool isInside) {
    const auto place = static_cast<std::size_t>(position) * 2 + (isInside ? 1 : 0);
    if (place >= fileSize_ * 2)
      return false;
    if (passed_.empty())
      passed_.resize(fileSize_ * 2);
    if (passed_[place])
      return carefulBytesLeft_ <= 0 ||
             (position >= unsureBefore_ && !looseEnds_.areMetBeyond(position, start_));
    passed_[place] = true;
    return false;
  }

  [[nodiscard]] LooseEnds &looseEnds() noexcept { return looseEnds_; }

private:
  static constexpr long carefulRounds = 2;
  static constexpr long carefulBytesAtLeast = 1 << 17;

  std::size_t fileSize_;
  std::vector<bool> passed_;
  LooseEnds looseEnds_;
  long start_ = 0;
  /// Up to here, edges have changed what an earlier parse has read.
  long unsureBefore_ = 0;
  long carefulBytesLeft_;
};
