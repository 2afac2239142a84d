#pragma once

#include "pdf_reader/CParamArray.h"
#include "pdf_reader/VectorBytes.h"
#include "streams/CIOStream.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// Reads a stream from its position on, in blocks of 1,024 bytes, and cuts the lines into tokens.
///
/// The tokens of a line form a group, also if the edge of a block cuts the line or a token. But if
/// an edge follows the line's last token, the next line with tokens joins the group. Text follows
/// an edge inside a comment. Search results depend on this.
///
/// Ownership: the stream and the token array live longer. Threads: one at a time.
class TokenReader {
public:
  enum class Comments { cut, keep };

  static constexpr long noEnd = std::numeric_limits<long>::max();

  /// Two bytes, one of which each line that matters contains.
  struct Marks {
    char one, other;
  };

  /// Reads nothing from `end` on. With `marks`, `next` may skip other lines while no tokens wait.
  TokenReader(CIOStream &stream, Comments comments, long end = noEnd,
              std::optional<Marks> marks = std::nullopt);

  /// Appends the tokens of the next line that has any, or of its part before the edge of a block.
  /// False at the end of the stream, and if the stream fails. Throws `std::bad_alloc`.
  bool next(CParamArray &tokens);

  /// Whether the group of the tokens appended last is complete.
  [[nodiscard]] bool isGroupComplete() const noexcept { return isGroupComplete_; }

  /// 1, or 0 if the stream has failed.
  [[nodiscard]] int result() const noexcept { return hasFailed_ ? 0 : 1; }

  /// The position of the group's first token.
  [[nodiscard]] long groupPosition() const noexcept { return groupPosition_; }

  /// The position of the tokens appended last, and their index in the array.
  [[nodiscard]] long linePosition() const noexcept { return linePosition_; }
  [[nodiscard]] unsigned long lineIndex() const noexcept { return lineIndex_; }

  /// The end of the line.
  [[nodiscard]] long lineEnd() const noexcept { return lineEnd_; }

private:
  static constexpr std::size_t blockSize = 1024;

  bool readBlock();
  void passLines() noexcept;
  const char *passBlanks() noexcept;
  void readLine(CParamArray &tokens);
  const char *readCarried(CParamArray &tokens);
  const char *readTokens(const char *position, CParamArray &tokens);
  const char *endOfToken(const char *position) noexcept;
  const char *passCommentSign(const char *position) noexcept;
  [[nodiscard]] long positionOf(const char *byte) const noexcept {
    return blockPosition_ + (byte - block_.data());
  }

  CIOStream &stream_;
  const bool cutsComments_;
  const std::optional<Marks> marks_;

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
  bool isGroupOpen_ = false;
  bool isGroupComplete_ = false;

  long groupPosition_ = 0;
  long linePosition_ = 0;
  unsigned long lineIndex_ = 0;
  long lineEnd_ = 0;

  /// Line ends follow a block, so that loops over a token need not check for its end.
  std::array<char, blockSize + vectorBytes::guardSize> block_;
};

} // namespace searchsystem
