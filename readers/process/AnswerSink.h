#pragma once

#include "readers/ReadResult.h"
#include "readers/ReaderProtocol.h"
#include "readers/documents/TextSink.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace searchsystem {

/// Sends a worker's answer: text in pieces, and how the reading ended.
class AnswerSink final : public TextSink {
public:
  explicit AnswerSink(std::uint64_t longestText) noexcept : longestText_(longestText) {}

  bool take(std::string_view utf8) override;

  /// Sends what is left, and the end.
  void end(UnreadReason reason) noexcept;

private:
  bool sendPiece() noexcept;

  const std::uint64_t longestText_;
  std::uint64_t taken_ = 0;
  bool isTooLong_ = false;
  bool isWanted_ = true;
  std::size_t size_ = 0;
  /// A record: its kind and the text.
  char record_[1 + longestPiece];
};

} // namespace searchsystem
