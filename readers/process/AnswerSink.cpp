#include "readers/process/AnswerSink.h"

#include "readers/process/SendRecord.h"

#include <algorithm>
#include <cstring>

namespace searchsystem {

bool AnswerSink::take(std::string_view utf8) {
  if (utf8.size() > longestText_ - taken_) {
    isTooLong_ = true;
    utf8 = utf8.substr(0, static_cast<std::size_t>(longestText_ - taken_));
  }
  taken_ += utf8.size();
  while (isWanted_ && !utf8.empty()) {
    const std::size_t part = std::min(utf8.size(), longestPiece - size_);
    std::memcpy(record_ + 1 + size_, utf8.data(), part);
    size_ += part;
    utf8.remove_prefix(part);
    if (size_ == longestPiece)
      isWanted_ = sendPiece();
  }
  return isWanted_ && !isTooLong_;
}

bool AnswerSink::sendPiece() noexcept {
  record_[0] = static_cast<char>(ReaderRecord::text);
  const std::size_t size = size_;
  size_ = 0;
  return sendRecord(record_, 1 + size);
}

void AnswerSink::end(UnreadReason reason) noexcept {
  if (!isWanted_ || (size_ != 0 && !sendPiece()))
    return;
  const char record[] = {static_cast<char>(ReaderRecord::end),
                         static_cast<char>(isTooLong_ ? UnreadReason::tooLarge : reason)};
  static_cast<void>(sendRecord(record, sizeof record));
}

} // namespace searchsystem
