#pragma once

#include "pdf_reader/CParamArray.h"
#include "pdf_reader/LooseEnds.h"
#include "streams/CIOStream.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

/// Reads a stream from its position on, in blocks of 1,024 bytes, and cuts the lines into tokens.
///
/// The tokens of a line form a group. A token that the edge of a block cuts is joined. A line that
/// goes on beyond the edge is one group, unless the edge stands behind its last token: then the
/// next line with tokens belongs to the group as well, and what follows an edge inside a comment is
/// text. That is how documents have always been read by this reader, and what is found depends on
/// it.
///
/// Ownership: the stream and the token array live longer. Threads: one at a time.
class TokenReader {
public:
  enum class Comments { cut, keep };

  static constexpr long noEnd = std::numeric_limits<long>::max();

  /// How much a reader that began at `start` and stopped at `stop` has read after its first block.
  [[nodiscard]] static long bytesBeyondFirstBlock(long start, long stop) noexcept {
    return std::max(stop - start - LooseEnds::blockSize, 0L);
  }

  /// `looseEnds` may be null, else it receives where comments stand. Nothing is read from `end` on.
  TokenReader(CIOStream &stream, Comments comments, LooseEnds *looseEnds = nullptr,
              long end = noEnd);

  /// Appends the tokens of the next line that has any, or of a part of it that ends with a block.
  /// False at the end of the stream, and when the stream fails or memory is short. Throws
  /// `std::bad_alloc`.
  bool next(CParamArray &tokens);

  /// Whether the tokens appended last end their group.
  [[nodiscard]] bool isGroupComplete() const noexcept { return isGroupComplete_; }

  /// 1, or 0 when `next` has failed.
  [[nodiscard]] int result() const noexcept { return hasFailed_ ? 0 : 1; }

  /// Where in the stream the first token of the group stands.
  [[nodiscard]] long groupPosition() const noexcept { return groupPosition_; }

  /// Where in the stream, and at which index of the array, the first token stands that was appended
  /// last.
  [[nodiscard]] long linePosition() const noexcept { return linePosition_; }
  [[nodiscard]] unsigned long lineIndex() const noexcept { return lineIndex_; }

  /// The end of the last token, and of the line.
  [[nodiscard]] long tokensEnd() const noexcept { return tokensEnd_; }
  [[nodiscard]] long lineEnd() const noexcept { return lineEnd_; }

  /// Whether the edge of a block, standing behind the last token of a line, has joined two lines to
  /// this group; any edge from `joinedFrom` to `joinedTo` would have.
  [[nodiscard]] bool isJoined() const noexcept { return isJoined_; }
  [[nodiscard]] long joinedFrom() const noexcept { return joinedFrom_; }
  [[nodiscard]] long joinedTo() const noexcept { return joinedTo_; }

private:
  static constexpr std::size_t blockSize = LooseEnds::blockSize;
  /// Behind a block: line ends, so that no loop over a token needs to look for the block's end, and
  /// as many that a token can be read in whole words.
  static constexpr std::size_t guardSize = CParamArray::copiedAtOnce;

  bool readBlock();
  bool makeRoom(CParamArray &tokens);
  const char *passBlanks() noexcept;
  void readLine(CParamArray &tokens);
  const char *readCarried(CParamArray &tokens);
  const char *readTokens(const char *position, CParamArray &tokens);
  const char *endOfToken(const char *position) noexcept;
  const char *passCommentSign(const char *position) noexcept;
  void append(CParamArray &tokens, const char *begin, const char *end) noexcept;
  [[nodiscard]] long positionOf(const char *byte) const noexcept {
    return blockPosition_ + (byte - block_.data());
  }

  CIOStream &stream_;
  LooseEnds *const looseEnds_;
  const bool cutsComments_;

  long size_;
  long blockPosition_;
  const char *cursor_ = nullptr;
  const char *end_ = nullptr;
  bool isLastBlock_;
  bool hasFailed_ = false;

  /// The beginning of a token that the edge of the last block has cut.
  std::string carried_;
  bool isCarrying_ = false;
  long carriedPosition_ = 0;
  /// Whether it ends with a percent sign whose meaning the next byte decides.
  bool endsOpen_ = false;
  /// Whether the token that was passed last is followed by a comment.
  bool isComment_ = false;
  /// Whether the edge of the last block stood inside a comment.
  bool isInsideComment_ = false;
  bool isGroupOpen_ = false;
  bool isGroupComplete_ = false;

  long groupPosition_ = 0;
  long linePosition_ = 0;
  unsigned long lineIndex_ = 0;
  long tokensEnd_ = 0;
  long lineEnd_ = 0;
  bool isJoined_ = false;
  long joinedFrom_ = 0;
  long joinedTo_ = 0;

  std::array<char, blockSize + guardSize> block_;
};
