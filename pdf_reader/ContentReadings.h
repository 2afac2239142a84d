#pragma once

#include "pdf_reader/ContentState.h"
#include "pdf_reader/KeywordSearch.h"
#include "pdf_reader/PlainArray.h"
#include "pdf_reader/VectorBytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// One content stream of a document: where it begins, and whether the keyword is in its text.
struct SearchedContent {
  enum class Result : std::uint8_t { unknown, absent, found, failed };

  long start;
  Result result = Result::unknown;
  /// Another one that is read alike from some place on.
  std::int32_t next = -1;
};

/// One way to read the lines of a file, for all contents whose parses have come to the same state:
/// they ride on it. It has the text that it has shown, as far as that is still to be searched.
///
/// Contents whose starts are congruent modulo the size of a block have all edges of blocks in
/// common. What else tells riders of a reading apart is the text that they have behind them, and
/// that no longer than the keyword is.
class ContentReading {
public:
  static constexpr long blockSize = 1024;
  static constexpr std::int32_t none = -1;

  /// Riders that have the same edges and the same past.
  struct Riders {
    std::int32_t first, last; ///< contents, linked
    std::int32_t past;
    std::int32_t next; ///< others with these edges
  };

  ContentReading() { heads_.fill(unused); }

  [[nodiscard]] bool isEmpty() const noexcept { return count_ == 0; }

  /// Whether a rider meets the edge of a block at a position.
  [[nodiscard]] bool hasEdgeAt(long position) const noexcept {
    return heads_[placeOf(position)] >= 0;
  }

  /// Room for so many bytes of text more, of which `ContentReadings::show` then takes some. Throws
  /// `std::bad_alloc`.
  [[nodiscard]] char *room(std::size_t size) {
    if (!text_.reserve(textSize_ + size + vectorBytes::guardSize))
      throw std::bad_alloc();
    return text_.data() + textSize_;
  }
  ContentState state;

private:
  friend class ContentReadings;

  /// A head that has not been used.
  static constexpr std::int32_t unused = -2;

  [[nodiscard]] static std::size_t placeOf(long position) noexcept {
    return static_cast<std::size_t>(position % blockSize);
  }
  [[nodiscard]] std::string_view text() const noexcept { return {text_.data(), wholeSize_}; }
  /// What there is of a character that is cut.
  [[nodiscard]] std::string_view cut() const noexcept {
    return {text_.data() + wholeSize_, textSize_ - wholeSize_};
  }
  /// Where it ends, text that was dropped counted.
  [[nodiscard]] std::size_t end() const noexcept { return dropped_ + wholeSize_; }
  [[nodiscard]] std::string_view textFrom(std::size_t place) const noexcept {
    return text().substr(place > dropped_ ? place - dropped_ : 0);
  }

  PlainArray<char> text_;
  std::size_t textSize_ = 0;
  /// How much of it are whole characters.
  std::size_t wholeSize_ = 0;
  /// How much text was dropped before that.
  std::size_t dropped_ = 0;
  /// Up to here, text dropped included, it was searched.
  std::size_t searched_ = 0;
  /// Pasts of riders that boarded so lately that the keyword may have begun before, in that order.
  std::vector<std::int32_t> recent_;
  /// The pasts of all others, which differ in their marks only.
  std::vector<std::int32_t> settled_;
  std::array<std::int32_t, blockSize> heads_;
  std::vector<std::uint16_t> usedHeads_;
  std::size_t count_ = 0;
  /// In the course of what riders have changed to it last.
  std::uint64_t change_ = 0;
};

/// All readings of a file that are alive at a place, and their riders.
///
/// Ownership: the search and the contents live longer. Threads: one at a time. Throws
/// `std::bad_alloc`.
class ContentReadings {
public:
  using Result = SearchedContent::Result;
  using Effect = ContentState::Effect;

  ContentReadings(const KeywordSearch &search, std::vector<SearchedContent> &contents)
      : search_(search), contents_(contents),
        keptText_(search.overlap() > 0 ? search.overlap() - 1 : 0) {}

  [[nodiscard]] bool isEmpty() const noexcept { return live_.empty(); }
  [[nodiscard]] std::size_t count() const noexcept { return live_.size(); }
  [[nodiscard]] ContentReading &operator[](std::size_t i) noexcept { return *live_[i]; }

  /// Lets a content ride that begins here, on a reading of its own or one that has come to the same
  /// state.
  void board(std::size_t content);
  ContentReading &boardAlone(std::size_t content);

  /// Goes on with one reading by a token, or to the end of its group. False when that has ended it.
  bool take(ContentReading &reading, std::string_view token);
  bool endGroup(ContentReading &reading) {
    return reading.state.endGroup() != Effect::stop || end(reading, Result::unknown);
  }

  /// Makes a reading in the same state, to which riders can change.
  ContentReading &fork(ContentReading &reading);

  /// Has the riders that meet an edge at `position` change to another reading in the same state.
  void change(ContentReading &from, ContentReading &to, long position);

  /// Joins readings that have come to the same state, and drops those without riders. Of the first
  /// readings nothing changes.
  void join(std::size_t first = 0);

  /// The keyword counts as not found by the riders of a reading, or of all but the largest.
  void giveUp(ContentReading &reading) { end(reading, Result::absent); }
  void keepLargest();

  /// Ends what riders read that meet an edge at `position`, or what all do.
  void endAll(long position);
  void endAll();

  /// Takes as many bytes of the room of a reading for text.
  void show(ContentReading &reading, std::size_t size) {
    reading.textSize_ += size;
    reading.wholeSize_ += search_.wholeCharacters(reading.cut());
    if (reading.textSize_ >= textAtOnce)
      search(reading);
  }

private:
  using Index = std::int32_t;
  using Riders = ContentReading::Riders;
  static constexpr Index none = ContentReading::none;
  static constexpr std::size_t textAtOnce = 1 << 13;

  /// What riders of a reading have in common but for their edges.
  struct Past {
    /// The end of the text that they had when they boarded, at the end of the reading's text as it
    /// was then.
    std::string text;
    std::size_t boarded = 0;
    /// For each encoding, whether the text is not valid in it, and whether the keyword was found.
    std::uint8_t invalid = 0, found = 0;
    Index riders = 0;
    /// The past that stands for this one as well, or none.
    Index same = none;
    /// Into which past this one has been changed last, and in the course of what.
    Index changed = none;
    std::uint64_t change = 0;
  };

  ContentReading &newReading();
  Index newPast(ContentReading &reading, std::string text, const Past *marks);
  void releasePast(Index past) noexcept;
  Index resolve(Index past) noexcept;
  void addContent(ContentReading &reading, std::size_t content, Index past);
  void add(ContentReading &reading, std::size_t place, Index riders);
  void changePlace(ContentReading &from, ContentReading &to, std::size_t place);
  Index changedPast(ContentReading &from, ContentReading &to, Index past);
  bool end(ContentReading &reading, Result result);
  void endPlace(ContentReading &reading, std::size_t place, Result result);
  [[nodiscard]] Result resultOf(const ContentReading &reading, const Past &past) const noexcept;
  void search(ContentReading &reading);
  void searchIn(ContentReading &reading, std::size_t encoding);
  void searchAcross(const ContentReading &reading, Past &past);
  void settle(ContentReading &reading);
  void dropText(ContentReading &reading) noexcept;
  void remove(ContentReading &reading) noexcept;

  const KeywordSearch &search_;
  std::vector<SearchedContent> &contents_;
  const std::size_t keptText_;
  std::vector<std::unique_ptr<ContentReading>> live_, spare_;
  std::vector<Riders> riders_;
  std::vector<Past> pasts_;
  std::vector<Index> freeRiders_, freePasts_;
  std::uint64_t changes_ = 0;
};
