#include "pdf_reader/ContentSearch.h"

#include "pdf_reader/ByteClasses.h"
#include "pdf_reader/VectorBytes.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace searchsystem {

namespace {

using Place = ContentState::Place;

constexpr long blockSize = ContentReading::blockSize;

bool isTrim(char c) noexcept { return classOf(c) == ByteClass::trim; }

/// Whether a percent sign before `end` begins a remark: doubled, or last, it is text.
bool beginsRemark(const char *sign, const char *end) noexcept {
  return sign + 1 != end && sign[1] != '%';
}

/// Whether a line that begins at `place` has no token.
bool isBlankFrom(const char *place, const char *end) noexcept {
  while (place != end && isTrim(*place))
    ++place;
  return place == end || (*place == '%' && beginsRemark(place, end));
}

/// What matters in a remark to parses that read a part of it as text.
struct Remark {
  const char *wordsEnd;
  bool hasSign = false;
  /// Whether the end of a word may be an operator or keyword.
  bool hasKeyword = false;

  Remark(const char *begin, const char *end) noexcept : wordsEnd(begin) {
    for (const char *i = begin; i != end; ++i) {
      hasSign |= *i == '%';
      if (!isTrim(*i))
        wordsEnd = i + 1;
      if (isTrim(*i) || (i + 1 != end && !isTrim(i[1]) && i[1] != '%'))
        continue;
      const std::string_view word(begin, static_cast<std::size_t>(i + 1 - begin));
      hasKeyword |= word.ends_with("obj") || word.ends_with("stream") || word.ends_with("BT") ||
                    word.ends_with("ET") ||
                    (word.size() > 1 && isTextOperator(word.substr(word.size() - 2)));
    }
  }
};

} // namespace

std::string_view ContentSearch::Line::next() noexcept {
  const char *i = tokensEnd;
  while (i != end && isTrim(*i))
    ++i;
  const char *const token = i;
  while (i != end && !isTrim(*i)) {
    if (*i == '%' && beginsRemark(i, end)) {
      remark = i;
      break;
    }
    i += *i == '%' && i + 1 != end ? 2 : 1;
  }
  if (i != token)
    tokensEnd = i;
  return {token, static_cast<std::size_t>(i - token)};
}

ContentSearch::ContentSearch(CIOStream &stream, const KeywordSearch &search, ReadBound &bound,
                             const std::vector<long> &starts)
    : bound_(bound), window_(stream), readings_(search) {
  std::vector<long> sorted = starts;
  std::sort(sorted.begin(), sorted.end());
  sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
  for (const long start : sorted)
    contents_.emplace_back(start);
  order_.reserve(starts.size());
  for (const long start : starts)
    order_.push_back(static_cast<std::size_t>(
        std::lower_bound(sorted.begin(), sorted.end(), start) - sorted.begin()));
}

bool ContentSearch::isFound() {
  const bool isReadable = findOpenEnds() && readAll();
  if (isReadable)
    readings_.endAll();
  for (const std::size_t i : order_) {
    const Result result = contents_[i].result;
    if (result == Result::found)
      return true;
    if (result == Result::failed || (result == Result::unknown && !isReadable))
      return false;
  }
  return false;
}

/// Whether the contents read so far decide the answer.
bool ContentSearch::isAnswered() {
  while (answered_ < order_.size() && contents_[order_[answered_]].result == Result::absent)
    ++answered_;
  return answered_ == order_.size() || contents_[order_[answered_]].result != Result::unknown;
}

/// False if the stream fails.
bool ContentSearch::readAll() {
  long position = 0;
  while (!isAnswered()) {
    if (readings_.isEmpty())
      position = nextPosition();
    if (position >= window_.size())
      return true;
    for (; nextOpenEnd_ != openEnds_.size() && openEnds_[nextOpenEnd_].position <= position;
         ++nextOpenEnd_)
      readings_.endAll(openEnds_[nextOpenEnd_].edge);
    const char *line = window_.at(position);
    if (line == nullptr)
      return false;
    if (nextPosition() <= position)
      boardUpTo(line);
    const char *const next = readPlainLines(line);
    if (next == line && !readLine(line))
      return false;
    position = next == line ? nextLine_ : window_.positionOf(next);
  }
  return true;
}

/// Reads lines that have no effect or show a string, while there is one reading. Returns the first
/// line that may do more.
const char *ContentSearch::readPlainLines(const char *line) {
  if (readings_.count() != 1 || readings_[0].state.isWaiting() ||
      readings_[0].state.place() == Place::stream)
    return line;
  ContentReading &reading = readings_[0];
  const char *limit = std::min(window_.dataEnd(), nextStart());
  if (nextOpenEnd_ != openEnds_.size())
    limit = std::min(limit, window_.placeOf(openEnds_[nextOpenEnd_].position));
  // Lines that matter contain one of these: "Tj" and "ET", "obj", "endobj" and "stream".
  const bool isText = reading.state.place() == Place::text;
  const char other = isText ? 'E' : reading.state.place() == Place::object ? 'm' : 'j';
  while (line < limit) {
    if (isText && *line == '<') {
      char *const room = reading.room(static_cast<std::size_t>(limit - line) / 2);
      const char *end = line + 1;
      const std::size_t size = vectorBytes::decodePairs(end, room);
      if (std::memcmp(end, "> Tj", 4) == 0 && end + 4 < limit &&
          classOf(end[4]) == ByteClass::lineEnd) {
        readings_.show(reading, sizeBeforeNUL(room, size));
        line = end + 5;
        continue;
      }
    }
    const vectorBytes::LineScan scan = vectorBytes::scanLine(line, 'j', other);
    if (scan.end >= limit || scan.hasEither || (isText && scan.hasComment))
      return line;
    if (isText)
      for (const char *i = scan.end; i != line && isTrim(i[-1]); --i)
        if (isEdge(reading, i))
          return line;
    line = scan.end + 1;
  }
  return line;
}

/// Reads any line; false if the stream fails.
bool ContentSearch::readLine(const char *begin) {
  const char *const end = vectorBytes::scanLine(begin, '\n', '\n').end;
  nextLine_ = window_.positionOf(begin);
  if (end >= window_.dataEnd() && window_.end() < window_.size())
    return window_.more(nextLine_);
  nextLine_ += end - begin + 1;
  line_ = {begin, std::min(end, window_.dataEnd())};
  if (readings_.count() > 1 &&
      !bound_.take((end - begin) * static_cast<long>(readings_.count() - 1)))
    readings_.keepLargest();
  takeTokens();
  takeEdges();
  boardInTail();
  readings_.join();
  return true;
}

void ContentSearch::takeTokens() {
  const bool isAlike = readings_.count() == 1 && !(hasNext() && nextStart() < line_.end);
  for (std::string_view token; !(token = line_.next()).empty();) {
    if (isAlike) {
      readings_.take(readings_[0], token);
      continue;
    }
    boardUpTo(token.data());
    for (std::size_t i = 0; i < readings_.count(); ++i)
      readings_.take(readings_[i], token);
    const char *const end = token.data() + token.size();
    for (; hasNext() && nextStart() < end; ++next_) {
      const std::string_view rest(nextStart(), static_cast<std::size_t>(end - nextStart()));
      if (isNextEmpty())
        continue;
      if (rest.find('%') != std::string_view::npos)
        apart_.push_back(next_);
      else
        readings_.take(readings_.boardAlone(contents_[next_]), rest);
      readings_.join();
    }
    if (readings_.count() > 1)
      readings_.join();
  }
}

/// Reads the tail of a line, which ends the group except for riders with an edge in it.
void ContentSearch::takeEdges() {
  const std::size_t count = readings_.count();
  const bool hasRemark = line_.remark != line_.end;
  for (std::size_t i = 0; i < count; ++i) {
    ContentReading &reading = readings_[i];
    if (hasRemark)
      takeRemark(reading, count);
    if (!line_.hasTokens())
      continue;
    ContentReading *open = nullptr;
    const char *last = hasRemark ? line_.remark + (line_.isGlued() ? 0 : 1) : line_.end;
    for (long n = 0; reading.state.isWaiting() && n < blockSize && last > line_.tokensEnd;
         ++n, --last)
      // Riders with an earlier edge in the remark have read it.
      if (isEdge(reading, last) && !(hasRemark && line_.end - last >= blockSize)) {
        open = open != nullptr ? open : &readings_.fork(reading);
        readings_.change(reading, *open, window_.positionOf(last));
      }
    readings_.endGroup(reading);
  }
}

/// Reads a remark for riders with an edge in it, for which the rest is text.
void ContentSearch::takeRemark(ContentReading &reading, std::size_t firstFork) {
  const Remark remark(line_.remark + 1, line_.end);
  const Place place = reading.state.place();
  const bool isWaiting = reading.state.isWaiting();
  if (!remark.hasKeyword && !isWaiting && (place == Place::outside || place == Place::object))
    return;
  ContentReading *open = nullptr;
  ContentReading *closed = nullptr;
  const auto close = [&] {
    if (closed != nullptr)
      readings_.endGroup(*closed);
    open = closed = nullptr;
  };
  const char *const end = line_.end;
  for (const char *i = line_.remark + 2; i <= end && i < line_.remark + 2 + blockSize; ++i) {
    if (!isEdge(reading, i))
      continue;
    const char *const last = i + (end - i) / blockSize * blockSize;
    if (last == i && isBlankFrom(i, end)) {
      if (!line_.hasTokens() || !isWaiting)
        continue;
      open = open != nullptr ? open : &readings_.fork(reading);
      readings_.change(reading, *open, window_.positionOf(i));
    } else if (remark.hasKeyword || place == Place::stream ||
               (last != i && (remark.hasSign || last > remark.wordsEnd))) {
      ContentReading &alone = readings_.fork(reading);
      readings_.change(reading, alone, window_.positionOf(i));
      readAlone(alone, i);
      close();
      // The other readings have not reached the end of the line yet.
      readings_.join(firstFork);
    } else if (!line_.hasTokens() && isWaiting) {
      closed = closed != nullptr ? closed : &readings_.fork(reading);
      readings_.change(reading, *closed, window_.positionOf(i));
    }
  }
  close();
}

/// Reads the line from `from` on, for riders with the same edges.
void ContentSearch::readAlone(ContentReading &reading, const char *from) {
  for (bool isOpen = false;;) {
    if (!bound_.take(line_.end - from)) {
      readings_.giveUp(reading);
      return;
    }
    Line rest{from, line_.end};
    for (std::string_view token; !(token = rest.next()).empty();)
      readings_.take(reading, token);
    isOpen = !rest.hasTokens();
    from += blockSize;
    for (; from <= rest.end && from <= rest.remark + 1; from += blockSize)
      isOpen |= from > rest.tokensEnd && !(rest.isGlued() && from == rest.remark + 1);
    if (from > rest.end) {
      if (!isOpen)
        readings_.endGroup(reading);
      return;
    }
  }
}

/// Boards contents that begin behind the last token.
void ContentSearch::boardInTail() {
  if (apart_.empty() && !(hasNext() && nextStart() <= line_.end))
    return;
  const auto boardApart = [this](std::size_t content) {
    readAlone(readings_.boardAlone(contents_[content]), window_.placeOf(contents_[content].start));
    readings_.join();
  };
  std::for_each(apart_.begin(), apart_.end(), boardApart);
  apart_.clear();
  boardUpTo(line_.remark);
  for (; hasNext() && nextStart() < line_.end; ++next_)
    if (!isNextEmpty())
      boardApart(next_);
}

void ContentSearch::boardUpTo(const char *place) {
  for (; hasNext() && nextStart() <= place; ++next_)
    if (!isNextEmpty())
      readings_.board(contents_[next_]);
}

/// Whether the next content begins in a group that the end of the file leaves open.
bool ContentSearch::isNextEmpty() noexcept {
  const long start = nextPosition();
  const bool isEmpty = std::any_of(openEnds_.begin(), openEnds_.end(), [start](const OpenEnd &end) {
    return end.position <= start && start < end.edge && (end.edge - start) % blockSize == 0;
  });
  if (isEmpty)
    contents_[next_].result = Result::absent;
  return isEmpty;
}

bool ContentSearch::isEdge(const ContentReading &reading, const char *place) const noexcept {
  return reading.hasEdgeAt(window_.positionOf(place));
}

/// Finds the groups that the end of the file leaves open. False if the stream fails.
bool ContentSearch::findOpenEnds() {
  const long size = window_.size();
  constexpr long atFirst = 256;
  for (long length = atFirst;; length *= 4) {
    const long from = std::max(size - length, 0L);
    if (from >= size)
      return true;
    while (window_.at(from) == nullptr || window_.end() < size)
      if (!window_.more(from))
        return false;
    // Most files end with a line without a tail, which decides at once.
    const char *const begin = window_.at(from);
    const char *last = nullptr;
    std::vector<OpenEnd> open;
    long first = -1;
    for (const bool isForAll : {false, true}) {
      for (const char *i = begin, *end = nullptr; i < window_.dataEnd(); i = end + 1) {
        end = vectorBytes::scanLine(i, '\n', '\n').end;
        if (from != 0 && i == begin)
          continue;
        line_ = {i, end};
        while (!line_.next().empty())
          ;
        if (isForAll)
          noteOpenEnds(open);
        else if (line_.hasTokens())
          last = line_.tokensEnd == line_.end ? nullptr : i;
        if (first < 0 && line_.hasTokens())
          first = window_.positionOf(i);
      }
      if (last == nullptr && first >= 0)
        return true;
    }
    openEnds_.clear();
    std::copy_if(open.begin(), open.end(), std::back_inserter(openEnds_),
                 [](const OpenEnd &end) { return end.edge != 0; });
    std::sort(openEnds_.begin(), openEnds_.end(),
              [](const OpenEnd &a, const OpenEnd &b) { return a.position < b.position; });
    // A group that is open in the first line may begin earlier.
    if (from == 0 || (first >= 0 && (openEnds_.empty() || openEnds_[0].position != first)))
      return true;
  }
}

/// Updates the open groups from before a line to behind it. `open` has an entry for each edge
/// modulo the size of a block, or none if no group is open.
void ContentSearch::noteOpenEnds(std::vector<OpenEnd> &open) const {
  const bool hasTokens = line_.hasTokens();
  const char *const first = hasTokens ? line_.tokensEnd + 1 : line_.remark + 2;
  if (!hasTokens && (open.empty() || first > line_.end))
    return;
  const std::vector<OpenEnd> before = open;
  if (hasTokens)
    open.clear();
  if (first > line_.end)
    return;
  open.resize(blockSize);
  for (const char *i = line_.end; i >= first && line_.end - i < blockSize; --i) {
    const long edge = window_.positionOf(i);
    if (edge >= window_.size() || (line_.isGlued() && i == line_.remark + 1))
      continue;
    const auto place = static_cast<std::size_t>(edge % blockSize);
    const bool wasOpen = !before.empty() && before[place].edge != 0;
    open[place] = {};
    if ((i <= line_.remark + 1 || isBlankFrom(i, line_.end)) && (hasTokens || wasOpen))
      open[place] = {wasOpen ? before[place].position : window_.positionOf(line_.begin), edge};
  }
}

} // namespace searchsystem
