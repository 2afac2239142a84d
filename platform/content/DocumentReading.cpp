#include "platform/content/DocumentReading.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <sys/socket.h>

namespace searchsystem {

namespace {

/// The program ends what takes too long by itself; it has so long to do so.
constexpr std::chrono::seconds allowance{1};
/// A program that has just been started has so long to say that it is at work.
constexpr std::chrono::seconds mostStartTime{5};

/// The text is counted with the kinds of its records.
constexpr std::uint64_t allowanceForRecords = 64 * 1024;

/// One byte more than a record takes, to see that it is too long.
constexpr std::size_t roomSize = 1 + longestPiece + 1;

/// Whether nobody holds the other end any more: a record of no bytes looks like it.
bool hasEnded(int socket) noexcept {
  pollfd state{socket, 0, 0};
  return poll(&state, 1, 0) != 0;
}

} // namespace

ContentAnswer DocumentReading::read(int document) {
  room_ = std::make_unique_for_overwrite<char[]>(roomSize);
  limits_ = ReaderConnection::shared().limits();
  // The program may have ended just when it was asked, or been killed.
  constexpr int mostTries = 2;
  for (int i = 0; i < mostTries; ++i) {
    comparison_.restart();
    received_ = 0;
    if (readOnce(document) == Progress::Ended)
      return answer_;
  }
  ReaderConnection::shared().noteSilence(start_);
  return {false, UnreadReason::noReader};
}

DocumentReading::Progress DocumentReading::readOnce(int document) {
  std::optional<ReaderConnection::Lent> lent = ReaderConnection::shared().lend(document);
  if (!lent)
    return endWith(UnreadReason::noReader);
  start_ = lent->start;
  const int socket = lent->answer.number();
  const auto now = Clock::now();
  deadline_ = now + std::chrono::milliseconds(limits_.milliseconds) + allowance;
  firstAnswerDeadline_ = std::min(deadline_, now + mostStartTime);

  const ContentService::Awaited awaited(service_, socket);
  Progress progress = Progress::GoesOn;
  while (progress == Progress::GoesOn)
    progress = receive(socket);
  return progress;
}

DocumentReading::Progress DocumentReading::receive(int socket) {
  const ssize_t size = recv(socket, room_.get(), roomSize, MSG_DONTWAIT);
  if (size < 0 && errno == EINTR)
    return Progress::GoesOn;
  if (size < 0 && errno == EAGAIN)
    return wait(socket);
  if (service_.isCancelled())
    return endWith(UnreadReason::none);
  if (size < 0 || (size == 0 && hasEnded(socket)))
    return Progress::Lost;
  if (received_ == 0)
    ReaderConnection::shared().noteAnswer(start_);
  if (Clock::now() >= deadline_)
    return endWith(UnreadReason::tookTooLong);
  return size == 0 ? endWith(UnreadReason::readerCrashed)
                   : takeRecord({room_.get(), static_cast<std::size_t>(size)});
}

DocumentReading::Progress DocumentReading::wait(int socket) {
  const bool isAtWork = ReaderConnection::shared().hasAnswered(start_);
  const auto until = isAtWork ? deadline_ : firstAnswerDeadline_;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
  pollfd awaited{socket, POLLIN, 0};
  const int most = static_cast<int>(std::clamp<std::int64_t>(left, 0, INT_MAX));
  if (poll(&awaited, 1, most) != 0)
    return Progress::GoesOn;
  const auto now = Clock::now();
  if (ReaderConnection::shared().hasAnswered(start_))
    return now < deadline_ ? Progress::GoesOn : endWith(UnreadReason::tookTooLong);
  if (now < firstAnswerDeadline_)
    return Progress::GoesOn;
  ReaderConnection::shared().noteSilence(start_);
  return endWith(UnreadReason::noReader);
}

DocumentReading::Progress DocumentReading::takeRecord(std::string_view record) {
  received_ += record.size();
  const std::string_view content = record.substr(1);
  switch (static_cast<ReaderRecord>(record.front())) {
  case ReaderRecord::alive:
    return Progress::GoesOn;
  case ReaderRecord::text:
    if (content.empty() || content.size() > longestPiece)
      break;
    if (received_ > limits_.text + allowanceForRecords)
      return endWith(UnreadReason::tooLarge);
    answer_.holds = comparison_.take(content);
    return answer_.holds ? Progress::Ended : Progress::GoesOn;
  case ReaderRecord::end:
    if (content.size() != 1 || content.front() < 0 ||
        content.front() > static_cast<char>(UnreadReason::noReader))
      break;
    return endWith(static_cast<UnreadReason>(content.front()));
  }
  return endWith(UnreadReason::readerCrashed);
}

DocumentReading::Progress DocumentReading::endWith(UnreadReason reason) noexcept {
  answer_ = {false, reason};
  return Progress::Ended;
}

} // namespace searchsystem
