#pragma once

#include "pdf_reader/ContentState.h"
#include "pdf_reader/KeywordSearch.h"
#include "pdf_reader/PlainArray.h"
#include "pdf_reader/VectorBytes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace searchsystem {

/// What contents share that boarded a reading with the same text.
struct ContentPast {
  /// The end of their text when they boarded, and where the reading's text ended then.
  std::string text;
  std::size_t boarded;
  /// A bit for each encoding: the text is invalid in it, the keyword was found.
  std::uint8_t invalid, found;
  /// The past that replaces this one, if any.
  std::shared_ptr<ContentPast> same;
  /// What the last change made of this past, and which change that was.
  std::weak_ptr<ContentPast> changed;
  std::uint64_t change = 0;
};

/// A content stream: where it begins, and whether its text holds the keyword.
struct SearchedContent {
  enum class Result : std::uint8_t { unknown, absent, found, failed };

  explicit SearchedContent(long position) noexcept : start(position) {}

  long start;
  Result result = Result::unknown;
  /// The past that it shares with the contents linked here, which have the same edges.
  std::shared_ptr<ContentPast> past;
  SearchedContent *next = nullptr, *last = nullptr;
  /// Others with these edges.
  SearchedContent *others = nullptr;
};

/// One way to read the lines of a file. All contents whose parses are in the same state ride on it.
/// It keeps its text until that is searched.
///
/// Contents whose starts are equal modulo the size of a block share all edges of blocks. Riders of
/// a reading differ only in their edges and in the end of their text before they boarded, as long
/// as an occurrence of the keyword.
class ContentReading {
public:
  static constexpr long blockSize = 1024;

  /// Whether a rider meets the edge of a block at a position.
  [[nodiscard]] bool hasEdgeAt(long position) const {
    return riders_.contains(position % blockSize);
  }

  /// Room for `size` more bytes of text, for `ContentReadings::show`. Throws `std::bad_alloc`.
  [[nodiscard]] char *room(std::size_t size) {
    text_.reserve(textSize_ + size + vectorBytes::guardSize);
    return text_.data() + textSize_;
  }

  ContentState state;

private:
  friend class ContentReadings;

  [[nodiscard]] std::string_view text() const noexcept { return {text_.data(), wholeSize_}; }
  /// The first bytes of an incomplete character.
  [[nodiscard]] std::string_view cut() const noexcept {
    return {text_.data() + wholeSize_, textSize_ - wholeSize_};
  }
  /// The size of all text since the reading began.
  [[nodiscard]] std::size_t end() const noexcept { return dropped_ + wholeSize_; }
  /// The text since riders with this past boarded, as far as it was kept.
  [[nodiscard]] std::string_view textSince(const ContentPast &past) const noexcept {
    return text().substr(past.boarded > dropped_ ? past.boarded - dropped_ : 0);
  }

  PlainArray<char> text_;
  std::size_t textSize_ = 0;
  /// The size of its whole characters.
  std::size_t wholeSize_ = 0;
  /// The size of the text dropped before it.
  std::size_t dropped_ = 0;
  /// Where the search stopped, counted like `end`.
  std::size_t searched_ = 0;
  /// Pasts of riders that boarded recently, oldest first: occurrences may begin before that.
  std::vector<std::shared_ptr<ContentPast>> recent_;
  /// All other pasts, which differ only in their marks.
  std::vector<std::shared_ptr<ContentPast>> settled_;
  /// The first content of each edge.
  std::unordered_map<long, SearchedContent *> riders_;
  /// The number of contents that differ in edge or past.
  std::size_t count_ = 0;
  /// The last change of riders to it.
  std::uint64_t change_ = 0;
};

/// All readings of a file at one place, and their riders.
///
/// Ownership: the search and the contents live longer. Threads: one at a time. Throws
/// `std::bad_alloc`.
class ContentReadings {
public:
  using Result = SearchedContent::Result;
  using Effect = ContentState::Effect;

  explicit ContentReadings(const KeywordSearch &search)
      : search_(search), keptText_(search.overlap() > 0 ? search.overlap() - 1 : 0) {}

  [[nodiscard]] bool isEmpty() const noexcept { return live_.empty(); }
  [[nodiscard]] std::size_t count() const noexcept { return live_.size(); }
  [[nodiscard]] ContentReading &operator[](std::size_t i) noexcept { return *live_[i]; }

  /// Adds a content that begins here, to a reading in the first state or to a new one.
  void board(SearchedContent &content);
  ContentReading &boardAlone(SearchedContent &content);

  /// Hands a reading the next token, or the end of the group. False if that ends the reading.
  bool take(ContentReading &reading, std::string_view token);
  bool endGroup(ContentReading &reading) {
    return reading.state.endGroup() != Effect::stop || end(reading, Result::unknown);
  }

  /// Makes a reading in the same state for riders to change to.
  ContentReading &fork(ContentReading &reading);

  /// Moves the riders with an edge at `position` to another reading in the same state.
  void change(ContentReading &from, ContentReading &to, long position);

  /// Joins readings in the same state, and drops those without riders, from the `first` on.
  void join(std::size_t first = 0);

  /// Ends a reading, or all but the largest, as if the keyword were absent.
  void giveUp(ContentReading &reading) { end(reading, Result::absent); }
  void keepLargest();

  /// Ends the contents with an edge at `position`, or all.
  void endAll(long position);
  void endAll();

  /// Appends the first `size` bytes of the reading's room to its text.
  void show(ContentReading &reading, std::size_t size) {
    reading.textSize_ += size;
    reading.wholeSize_ += search_.wholeCharacters(reading.cut());
    if (reading.textSize_ >= textAtOnce)
      search(reading);
  }

private:
  using PastPointer = std::shared_ptr<ContentPast>;
  static constexpr std::size_t textAtOnce = 1 << 13;

  ContentReading &newReading();
  void add(ContentReading &reading, SearchedContent &added, PastPointer past);
  static PastPointer newPast(ContentReading &reading, std::string text = {},
                             std::uint8_t invalid = 0, std::uint8_t found = 0);
  static void resolve(PastPointer &past) noexcept;
  PastPointer changedPast(const ContentReading &from, ContentReading &to, PastPointer past);
  bool end(ContentReading &reading, Result result);
  void endRiders(ContentReading &reading, SearchedContent *first, Result result);
  [[nodiscard]] Result resultOf(const ContentReading &reading,
                                const ContentPast &past) const noexcept;
  void search(ContentReading &reading);
  void searchIn(ContentReading &reading, std::size_t encoding);
  void searchAcross(const ContentReading &reading, ContentPast &past);
  void settle(ContentReading &reading);
  void dropText(ContentReading &reading) noexcept;

  const KeywordSearch &search_;
  const std::size_t keptText_;
  std::vector<std::unique_ptr<ContentReading>> live_;
  std::uint64_t changes_ = 0;
};

} // namespace searchsystem
