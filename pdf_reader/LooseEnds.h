#pragma once

#include <array>

/// Where in a file the edge of a block would change which tokens are handed over together: between
/// the last token of a line and its line end, when tokens wait there that the next line's would
/// complete, and in comments. Blocks are counted from where a parse begins, so that what two parses
/// see of the same lines can differ there, and only there.
///
/// Threads: one at a time.
class LooseEnds {
public:
  static constexpr long blockSize = 1024;

  /// Notes the positions from `first` to `last`.
  void note(long first, long last) noexcept {
    if (last - first >= blockSize)
      first = last - blockSize + 1;
    for (; first <= last; ++first) {
      long &noted = last_[static_cast<std::size_t>(first % blockSize)];
      noted = noted < first ? first : noted;
    }
  }

  /// Whether an edge of a parse that begins at `start` stands at a noted position beyond
  /// `position`.
  [[nodiscard]] bool areMetBeyond(long position, long start) const noexcept {
    return lastMet(start) > position;
  }

  /// The last noted position at which an edge of a parse that begins at `start` stands; 0 if none.
  [[nodiscard]] long lastMet(long start) const noexcept {
    return last_[static_cast<std::size_t>(start % blockSize)];
  }

private:
  std::array<long, blockSize> last_{};
};
