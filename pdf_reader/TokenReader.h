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
/// the edge stands behind the line's last token, the next line with tokens joins the group. What
/// follows an edge inside a comment is text. What is found in a document depends on this.
///
/// Ownership: the stream and the token array live longer. Threads: one at a time.
class TokenReader {
public:
  enum class Comments { cut, keep };

  static constexpr long noEnd = std::numeric_limits<long>::max();

  /// Each line that matters contains one of two bytes.
  struct Telling {
    char one, other;
  };

  /// Reads nothing from `end` on. With `telling`, `next` may skip lines that do not matter while no
  /// tokens wait.
  TokenReader(CIOStream &stream, Comments comments, long end = noEnd,
              std::optional<Telling> telling = std::nullopt);

  /// Appends the tokens of the next line that has any, or of a part of it that ends with a block.
  /// False at the end of the stream, and when the stream fails. Throws `std::bad_alloc`.
  bool next(CParamArray &tokens);

  /// Whether the tokens appended last end their group.
  [[nodiscard]] bool isGroupComplete() const noexcept { return isGroupComplete_; }

  /// 1, or 0 when `next` has failed.
  [[nodiscard]] int result() const noexcept { return hasFailed_ ? 0 : 1; }

  /// Where in the stream the first token of the group stands.
  [[nodiscard]] long groupPosition() const noexcept { return groupPosition_; }

  /// Where in the stream, and at which index of the array, the tokens appended last begin.
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
  const std::optional<Telling> telling_;

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

  /// Line ends stand behind a block, so that no loop over a token has to look for the block's end.
  std::array<char, blockSize + vectorBytes::guardSize> block_;
};

} // namespace searchsystem
