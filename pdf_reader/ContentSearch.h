#pragma once

#include "pdf_reader/ContentReadings.h"
#include "pdf_reader/KeywordSearch.h"
#include "pdf_reader/LineWindow.h"
#include "pdf_reader/ReadBounds.h"
#include "streams/CIOStream.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Looks for a keyword in the content streams of a document.
///
/// The answers are those of `CPDFContents` for each content stream alone, whose parse continues
/// through the following objects, mostly to the end of the file. But the file is read only once,
/// line by line, from the first content on. A line means the same to all parses in the same state.
/// Only its tail, behind the last token, depends on the edges of blocks, which each parse counts
/// from its own start: an edge there joins the next line to the group, and one in a remark makes
/// the rest of the remark text.
///
/// Ownership: the stream, the keyword's search and the bound live longer. Threads: one at a time.
/// Throws `std::bad_alloc`.
class ContentSearch {
public:
  /// `starts` are the positions of the contents, in the order of pages.
  ContentSearch(CIOStream &stream, const KeywordSearch &search, ReadBound &bound,
                const std::vector<long> &starts);

  /// Whether a content holds the keyword and none before it fails. Call it once.
  bool isFound();

private:
  using Result = SearchedContent::Result;

  /// A line, or the rest of one, that is cut into tokens.
  struct Line {
    const char *begin, *end;
    const char *tokensEnd = begin; ///< behind the last token so far
    const char *remark = end;      ///< once there are no more tokens: its percent sign, if any

    /// The next token; empty when there is none.
    std::string_view next() noexcept;
    [[nodiscard]] bool hasTokens() const noexcept { return tokensEnd != begin; }
    /// Whether the remark follows a token without a blank.
    [[nodiscard]] bool isGlued() const noexcept { return hasTokens() && remark == tokensEnd; }
  };

  /// A group that the end of the file leaves open for contents with this edge. Their parses end
  /// before it.
  struct OpenEnd {
    long position = 0, edge = 0;
  };

  bool readAll();
  bool isAnswered();
  const char *readPlainLines(const char *line);
  bool readLine(const char *begin);
  void takeTokens();
  void takeEdges();
  void takeRemark(ContentReading &reading, std::size_t firstFork);
  void boardInTail();
  void boardUpTo(const char *place);
  void readAlone(ContentReading &reading, const char *from);
  bool findOpenEnds();
  void noteOpenEnds(std::vector<OpenEnd> &open) const;
  [[nodiscard]] bool isEdge(const ContentReading &reading, const char *place) const noexcept;
  bool isNextEmpty() noexcept;

  [[nodiscard]] bool hasNext() const noexcept { return next_ != contents_.size(); }
  [[nodiscard]] const char *nextStart() const noexcept { return window_.placeOf(nextPosition()); }
  [[nodiscard]] long nextPosition() const noexcept {
    return hasNext() ? contents_[next_].start : window_.size();
  }

  ReadBound &bound_;
  LineWindow window_;
  std::vector<SearchedContent> contents_;
  /// The contents in the order of pages, and how many of the first are known to be absent.
  std::vector<std::size_t> order_;
  std::size_t answered_ = 0;
  std::size_t next_ = 0;
  ContentReadings readings_;
  std::vector<OpenEnd> openEnds_;
  std::size_t nextOpenEnd_ = 0;
  Line line_{};
  /// Where the next line begins.
  long nextLine_ = 0;
  /// Contents that begin inside a token with percent signs, which they read differently.
  std::vector<std::size_t> apart_;
};

} // namespace searchsystem
