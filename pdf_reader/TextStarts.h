#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// How the texts begin that follow from objects of a file on, as parses have read them: what stands
/// behind an object whose answer is known need not be read once more to look for a keyword that
/// begins before it.
///
/// Of each object so much is kept as a keyword can take, and where the text goes on. All of it
/// together is less than the file, unless objects lie inside one another, as only damage brings
/// about; beyond twice the file what else would have to be kept counts as empty.
///
/// Threads: one at a time. Throws `std::bad_alloc`.
class TextStarts {
public:
  static constexpr long none = -1;

  /// Of each text `most` bytes count.
  TextStarts(long fileSize, std::size_t most)
      : most_(most), mostInAll_(static_cast<std::size_t>(std::max(fileSize, 0L)) * 2 + (1 << 16)) {}

  /// Notes the text of the object at `position`, and the object, noted before, with whose text it
  /// goes on. What was noted first stands.
  void note(long position, std::string_view text, long next) {
    if (!places_.try_emplace(position, starts_.size()).second)
      return;
    text = text.substr(0, most_);
    if (texts_.size() + text.size() > mostInAll_)
      text = {};
    std::size_t following = placeOf(next);
    if (following != nowhere && starts_[following].length == 0)
      following = starts_[following].next;
    starts_.push_back({texts_.size(), text.size(), following});
    texts_ += text;
  }

  /// Appends the beginning of the text that follows from the object at `position` on.
  void append(long position, std::string &text) const {
    std::size_t left = most_;
    for (std::size_t place = placeOf(position); left > 0 && place != nowhere;) {
      const Start &start = starts_[place];
      const std::size_t length = std::min(start.length, left);
      text.append(texts_, start.offset, length);
      left -= length;
      place = start.next;
    }
  }

private:
  static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

  struct Start {
    std::size_t offset, length;
    /// Which of the starts it goes on with, one that is not empty.
    std::size_t next;
  };

  [[nodiscard]] std::size_t placeOf(long position) const {
    const auto place = places_.find(position);
    return place == places_.end() ? nowhere : place->second;
  }

  std::size_t most_;
  std::size_t mostInAll_;
  std::unordered_map<long, std::size_t> places_;
  std::vector<Start> starts_;
  std::string texts_;
};
