#include "pdf_reader/TokenReader.h"

#include "pdf_reader/ByteClasses.h"
#include "pdf_reader/VectorBytes.h"

#include <algorithm>
#include <cstring>

namespace searchsystem {

namespace {

/// The first byte from `position` on that may end a token. Line ends follow the bytes.
const char *firstSpecial(const char *position) noexcept {
  while (classOf(*position) == ByteClass::text)
    ++position;
  return position;
}

const char *firstLineEnd(const char *position) noexcept {
  while (classOf(*position) != ByteClass::lineEnd)
    ++position;
  return position;
}

} // namespace

// The block and its guard are written before they are read.
// NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.UninitializedObject)
TokenReader::TokenReader(CIOStream &stream, Comments comments, long end, std::optional<Marks> marks)
    : stream_(stream), cutsComments_(comments == Comments::cut), marks_(marks),
      blockPosition_(stream.Tell()) {
  size_ = std::min(stream.GetSize(), end);
  isLastBlock_ = blockPosition_ >= size_;
}

bool TokenReader::readBlock() {
  if (isLastBlock_)
    return false;
  blockPosition_ += end_ == nullptr ? 0 : end_ - block_.data();
  const long count = std::min(static_cast<long>(blockSize), size_ - blockPosition_);
  long done = 0;
  if (stream_.Read(block_.data(), count, &done) != 1 || done <= 0 || done > count) {
    hasFailed_ = true;
    return false;
  }
  cursor_ = block_.data();
  end_ = cursor_ + done;
  std::memset(block_.data() + done, '\n', vectorBytes::guardSize);
  isLastBlock_ = blockPosition_ + done == size_;
  return true;
}

bool TokenReader::next(CParamArray &tokens) {
  isGroupComplete_ = false;
  do {
    if (cursor_ == end_ && !readBlock())
      return false;
    if (marks_ && tokens.GetCount() == 0 && !isCarrying_)
      passLines();
    // Room for all tokens that the rest of the block can hold.
    const auto rest = static_cast<std::size_t>(end_ - cursor_);
    tokens.makeRoom(rest / 2 + 2, carried_.size() + rest + rest / 2 + 2);
    lineIndex_ = tokens.GetCount();
    readLine(tokens);
  } while (tokens.GetCount() == lineIndex_);
  if (!isGroupOpen_)
    groupPosition_ = linePosition_;
  isGroupOpen_ = !isGroupComplete_;
  return true;
}

/// Skips lines that do not matter, up to the one that the edge of the block cuts.
void TokenReader::passLines() noexcept {
  for (;;) {
    const auto scan = vectorBytes::scanLine(cursor_, marks_->one, marks_->other);
    if (scan.end >= end_ || scan.hasEither)
      return;
    lineEnd_ = positionOf(scan.end);
    cursor_ = scan.end + 1;
  }
}

/// Skips empty lines and the blanks before the next token.
const char *TokenReader::passBlanks() noexcept {
  const char *position = cursor_;
  while (position != end_ && classOf(*position) >= ByteClass::trim)
    ++position;
  return position;
}

void TokenReader::readLine(CParamArray &tokens) {
  const char *position = nullptr;
  isComment_ = false;
  if (isCarrying_) {
    linePosition_ = carriedPosition_;
    position = readCarried(tokens);
  } else {
    position = passBlanks();
    linePosition_ = positionOf(position);
  }
  if (position != end_)
    position = readTokens(position, tokens);
  cursor_ = position;
  lineEnd_ = positionOf(position);
  const bool isAtEdge = position == end_;
  isGroupComplete_ = (!isAtEdge || isLastBlock_) && tokens.GetCount() > lineIndex_;
}

const char *TokenReader::readCarried(CParamArray &tokens) {
  const char *position = cursor_;
  if (endsOpen_) {
    if (*position == '%') {
      ++position;
    } else if (classOf(*position) != ByteClass::lineEnd) {
      isComment_ = true;
      carried_.pop_back();
    }
  }
  if (!isComment_)
    position = endOfToken(position);
  if (position == end_ && !isLastBlock_) {
    carried_.append(cursor_, position);
    return position;
  }
  isCarrying_ = false;
  if (position != cursor_)
    carried_.append(cursor_, position);
  if (!carried_.empty())
    tokens.appendInRoom(carried_);
  carried_.clear();
  return isComment_ ? firstLineEnd(position) : position;
}

/// Reads tokens up to the end of the line or block, and returns that.
const char *TokenReader::readTokens(const char *position, CParamArray &tokens) {
  for (;;) {
    while (classOf(*position) == ByteClass::trim)
      ++position;
    if (classOf(*position) == ByteClass::lineEnd)
      return position;
    const char *const begin = position;
    position = endOfToken(position);
    if (position == end_ && !isLastBlock_ && !isComment_) {
      carried_.assign(begin, position);
      carriedPosition_ = positionOf(begin);
      isCarrying_ = true;
      return position;
    }
    if (position != begin)
      tokens.appendInRoom({begin, static_cast<std::size_t>(position - begin)});
    if (isComment_)
      return firstLineEnd(position);
  }
}

/// The end of the token that continues at `position`. Sets `endsOpen_`, and `isComment_` when a
/// comment follows.
const char *TokenReader::endOfToken(const char *position) noexcept {
  endsOpen_ = false;
  position = firstSpecial(position);
  while (*position == '%') {
    position = passCommentSign(position);
    if (isComment_)
      break;
    position = firstSpecial(position);
  }
  return position;
}

/// Skips a percent sign that is text: a doubled one, or one at the end of the line. Any other
/// begins a comment.
const char *TokenReader::passCommentSign(const char *position) noexcept {
  const char next = position[1];
  if (!cutsComments_)
    return position + 1;
  if (next == '%')
    return position + 2;
  if (classOf(next) == ByteClass::lineEnd) {
    endsOpen_ = position + 1 == end_;
    return position + 1;
  }
  isComment_ = true;
  return position;
}

} // namespace searchsystem
