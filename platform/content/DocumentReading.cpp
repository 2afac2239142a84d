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
    hasAnswered_ = false;
    if (readOnce(document) == Progress::Ended)
      return answer_;
  }
  ReaderConnection::shared().noteSilence(start_);
  return {false, UnreadReason::noReader};
}

DocumentReading::Progress DocumentReading::readOnce(int document) {
  std::optional<ReaderConnection::Lent> lent = ReaderConnection::shared().lend(document);
  if (!lent)
    return endWith({false, UnreadReason::noReader});
  start_ = lent->start;
  const int socket = lent->answer.number();
  const auto now = Clock::now();
  deadline_ = now + std::chrono::milliseconds(limits_.milliseconds) + allowance;
  firstAnswerDeadline_ = std::min(deadline_, now + mostStartTime);

  const Cancellation::Awaited awaited(cancellation_, socket);
  ReaderAnswer records(comparison_, limits_.text);
  Progress progress = Progress::GoesOn;
  while (progress == Progress::GoesOn)
    progress = receive(socket, records);
  return progress;
}

DocumentReading::Progress DocumentReading::receive(int socket, ReaderAnswer &records) {
  const ssize_t size = recv(socket, room_.get(), roomSize, MSG_DONTWAIT);
  if (size < 0 && errno == EINTR)
    return Progress::GoesOn;
  if (size < 0 && errno == EAGAIN)
    return wait(socket);
  if (cancellation_.isCancelled())
    return endWith({false, UnreadReason::none});
  if (size < 0 || (size == 0 && hasEnded(socket)))
    return Progress::Lost;
  if (!hasAnswered_)
    ReaderConnection::shared().noteAnswer(start_);
  hasAnswered_ = true;
  if (Clock::now() >= deadline_)
    return endWith({false, UnreadReason::tookTooLong});
  const auto answer = records.take({room_.get(), static_cast<std::size_t>(size)});
  return answer ? endWith(*answer) : Progress::GoesOn;
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
    return now < deadline_ ? Progress::GoesOn : endWith({false, UnreadReason::tookTooLong});
  if (now < firstAnswerDeadline_)
    return Progress::GoesOn;
  ReaderConnection::shared().noteSilence(start_);
  return endWith({false, UnreadReason::noReader});
}

DocumentReading::Progress DocumentReading::endWith(ContentAnswer answer) noexcept {
  answer_ = answer;
  return Progress::Ended;
}

} // namespace searchsystem
