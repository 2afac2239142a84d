#pragma once

#include "pdf_reader/ContentReadings.h"
#include "pdf_reader/KeywordSearch.h"
#include "pdf_reader/LineWindow.h"
#include "pdf_reader/ReadBounds.h"
#include "streams/CIOStream.h"

#include <cstddef>
#include <string_view>
#include <vector>

/// Looks for a keyword in the content streams of a document.
///
/// The answers are those of `CPDFContents` for each content stream for itself, whose parse goes on
/// through the objects behind it, mostly to the end of the file. But the file is read only once,
/// from the first content on, line by line. A line means the same to all contents whose parses are
/// in the same state; only what stands behind its last token depends on where the edges of blocks
/// are, which each parse counts from its beginning: an edge there joins the next line to the group,
/// and an edge in a remark makes the rest of the remark text.
///
/// Ownership: the stream, the keyword's search and the bounds live longer. Threads: one at a time.
/// Throws `std::bad_alloc`.
class ContentSearch {
public:
  /// The contents are given by where they begin, in the order of pages.
  ContentSearch(CIOStream &stream, const KeywordSearch &search, ReadBounds &bounds,
                const std::vector<long> &starts);

  /// Whether the keyword is found in a content before any fails. To be asked once.
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

  /// The group that the end of the file leaves open for contents with an edge here. It is not
  /// handed over, so that for them the file ends before it.
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

  ReadBounds &bounds_;
  LineWindow window_;
  std::vector<SearchedContent> contents_;
  /// The contents in the order of pages, and how many of them do not decide the answer.
  std::vector<std::size_t> order_;
  std::size_t answered_ = 0;
  std::size_t next_ = 0;
  ContentReadings readings_;
  std::vector<OpenEnd> openEnds_;
  std::size_t nextOpenEnd_ = 0;
  Line line_{};
  /// Where the line begins that comes next.
  long nextLine_ = 0;
  /// Contents that begin inside a token whose percent signs mean something else to them.
  std::vector<std::size_t> apart_;
};
