#include "platform/content/ReaderAnswer.h"

#include "readers/ReaderProtocol.h"

namespace searchsystem {

std::optional<ContentAnswer> ReaderAnswer::take(std::string_view record) {
  constexpr ContentAnswer lie{false, UnreadReason::readerCrashed};
  if (record.empty())
    return lie;
  const std::string_view content = record.substr(1);
  switch (static_cast<ReaderRecord>(record.front())) {
  case ReaderRecord::alive:
    return std::nullopt;
  case ReaderRecord::text:
    if (content.empty() || content.size() > longestPiece)
      return lie;
    length_ += content.size();
    if (length_ > longestText_)
      return ContentAnswer{false, UnreadReason::tooLarge};
    if (comparison_.take(content))
      return ContentAnswer{true, UnreadReason::none};
    return std::nullopt;
  case ReaderRecord::end:
    if (content.size() != 1 || content.front() < 0 ||
        content.front() > static_cast<char>(UnreadReason::noReader))
      return lie;
    return ContentAnswer{false, static_cast<UnreadReason>(content.front())};
  case ReaderRecord::photograph:
    break;
  }
  return lie;
}

} // namespace searchsystem
