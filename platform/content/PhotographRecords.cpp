#include "platform/content/PhotographRecords.h"

#include "platform/foundation/NaturalLanguageDate.h"
#include "readers/ReaderProtocol.h"

#include <cstring>
#include <optional>

namespace searchsystem {

namespace {

std::optional<UnreadReason> reasonIn(std::string_view content) noexcept {
  if (content.size() != 1 || content.front() < 0 ||
      content.front() > static_cast<char>(UnreadReason::noReader))
    return std::nullopt;
  return static_cast<UnreadReason>(content.front());
}

} // namespace

void PhotographRecords::restart() noexcept {
  length_ = 0;
  isInField_ = false;
  content_ = {};
}

PhotographRecords::State PhotographRecords::take(std::string_view record) {
  if (record.empty() || record.size() > 1 + longestPiece)
    return lie();
  switch (static_cast<ReaderRecord>(record.front())) {
  case ReaderRecord::alive:
    return State::Incomplete;
  case ReaderRecord::photograph:
    rest_ = record.substr(1);
    return rest_.empty() ? lie() : takeRest();
  case ReaderRecord::end: {
    const std::optional<UnreadReason> reason = reasonIn(record.substr(1));
    return reason && *reason != UnreadReason::none ? endWorker(*reason) : lie();
  }
  case ReaderRecord::text:
    break;
  }
  return lie();
}

PhotographRecords::State PhotographRecords::takeRest() {
  State state = State::Incomplete;
  while (state == State::Incomplete && !rest_.empty()) {
    std::uint32_t length = 0;
    constexpr std::size_t header = 1 + sizeof length;
    if (rest_.size() < header)
      return lie();
    std::memcpy(&length, rest_.data() + 1, sizeof length);
    if (length > rest_.size() - header)
      return lie();
    const char part = rest_.front();
    const std::string_view content = rest_.substr(header, length);
    rest_.remove_prefix(header + length);
    state = takePart(part, content);
  }
  return state;
}

PhotographRecords::State PhotographRecords::takePart(char part, std::string_view content) {
  switch (static_cast<PhotographPart>(part)) {
  case PhotographPart::name:
    isInField_ = true;
    if (comparison_ != nullptr)
      comparison_->restart();
    return State::Incomplete;
  case PhotographPart::text:
    return takeText(content);
  case PhotographPart::date:
    content_.date = intervalOfNaturalLanguageDate(content);
    return State::Incomplete;
  case PhotographPart::maker:
  case PhotographPart::model:
    if (content.size() > longestCameraText)
      return lie();
    (part == static_cast<char>(PhotographPart::maker) ? content_.maker : content_.model) = content;
    return State::Incomplete;
  case PhotographPart::end:
    if (const std::optional<UnreadReason> reason = reasonIn(content)) {
      content_.reason = *reason;
      return State::Complete;
    }
  }
  return lie();
}

PhotographRecords::State PhotographRecords::takeText(std::string_view text) {
  if (!isInField_ || text.empty())
    return lie();
  length_ += text.size();
  if (length_ > longestText_)
    return endWorker(UnreadReason::tooLarge);
  if (comparison_ != nullptr && !content_.holds)
    content_.holds = comparison_->take(text);
  return State::Incomplete;
}

PhotographRecords::State PhotographRecords::endWorker(UnreadReason reason) noexcept {
  content_.reason = reason;
  rest_ = {};
  return State::WorkerEnded;
}

} // namespace searchsystem
