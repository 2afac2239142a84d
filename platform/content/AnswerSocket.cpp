#include "platform/content/AnswerSocket.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace searchsystem {

namespace {

/// The program ends what takes too long by itself; it has so long to do so.
constexpr std::chrono::seconds allowance{1};
/// A program that has just been started has so long to say that it is at work.
constexpr std::chrono::seconds mostStartTime{5};

/// One byte more than a record takes, to see that it is too long.
constexpr std::size_t roomSize = 1 + longestPiece + 1;

} // namespace

AnswerSocket::AnswerSocket(Cancellation &cancellation, ReaderConnection::Lent lent)
    : cancellation_(cancellation), socket_(std::move(lent.answer)), start_(lent.start),
      awaited_(cancellation, socket_.number()),
      room_(std::make_unique_for_overwrite<char[]>(roomSize)),
      mostTime_(ReaderConnection::shared().limits().milliseconds) {
  beginAnswer();
}

void AnswerSocket::beginAnswer() noexcept {
  const auto now = Clock::now();
  deadline_ = now + mostTime_ + allowance;
  firstAnswerDeadline_ = std::min(deadline_, now + mostStartTime);
}

bool AnswerSocket::hasNews() const noexcept {
  pollfd state{socket_.number(), POLLIN, 0};
  return poll(&state, 1, 0) != 0;
}

AnswerSocket::Outcome AnswerSocket::receive(std::string_view &record) noexcept {
  ssize_t size = 0;
  while ((size = recv(socket_.number(), room_.get(), roomSize, MSG_DONTWAIT)) < 0 &&
         (errno == EINTR || errno == EAGAIN))
    if (errno == EAGAIN)
      if (const std::optional<Outcome> outcome = wait())
        return *outcome;
  if (cancellation_.isCancelled())
    return Outcome::Cancelled;
  // A record of no bytes looks like the end, unless somebody holds the other end.
  pollfd state{socket_.number(), 0, 0};
  if (size < 0 || (size == 0 && poll(&state, 1, 0) != 0))
    return Outcome::Lost;
  if (!hasAnswered_)
    ReaderConnection::shared().noteAnswer(start_);
  hasAnswered_ = true;
  if (Clock::now() >= deadline_)
    return Outcome::TookTooLong;
  record = {room_.get(), static_cast<std::size_t>(size)};
  return Outcome::Record;
}

std::optional<AnswerSocket::Outcome> AnswerSocket::wait() const noexcept {
  const bool isAtWork = hasAnswered_ || ReaderConnection::shared().hasAnswered(start_);
  const auto until = isAtWork ? deadline_ : firstAnswerDeadline_;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
  pollfd awaited{socket_.number(), POLLIN, 0};
  const int most = static_cast<int>(std::clamp<std::int64_t>(left, 0, INT_MAX));
  if (poll(&awaited, 1, most) != 0)
    return std::nullopt;
  const auto now = Clock::now();
  if (ReaderConnection::shared().hasAnswered(start_))
    return now < deadline_ ? std::nullopt : std::optional(Outcome::TookTooLong);
  if (now < firstAnswerDeadline_)
    return std::nullopt;
  ReaderConnection::shared().noteSilence(start_);
  return Outcome::NoReader;
}

} // namespace searchsystem
