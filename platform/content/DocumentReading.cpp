#include "platform/content/DocumentReading.h"

#include "platform/content/AnswerSocket.h"
#include "platform/content/ReaderAnswer.h"
#include "platform/content/ReaderConnection.h"

#include <utility>

namespace searchsystem {

ContentAnswer DocumentReading::read(int document) {
  // The program may have ended just when it was asked, or been killed.
  constexpr int mostTries = 2;
  for (int i = 0; i < mostTries; ++i) {
    comparison_.restart();
    if (const std::optional<ContentAnswer> answer = readOnce(document))
      return *answer;
  }
  ReaderConnection::shared().noteSilence(start_);
  return {false, UnreadReason::noReader};
}

std::optional<ContentAnswer> DocumentReading::readOnce(int document) {
  std::optional<ReaderConnection::Lent> lent = ReaderConnection::shared().lend(document);
  if (!lent)
    return ContentAnswer{false, UnreadReason::noReader};
  start_ = lent->start;
  AnswerSocket socket(cancellation_, *std::move(lent));
  ReaderAnswer records(comparison_, ReaderConnection::shared().limits().text);
  while (true) {
    std::string_view record;
    switch (socket.receive(record)) {
    case AnswerSocket::Outcome::Record:
      if (const std::optional<ContentAnswer> answer = records.take(record))
        return *answer;
      break;
    case AnswerSocket::Outcome::Lost:
      return std::nullopt;
    case AnswerSocket::Outcome::TookTooLong:
      return ContentAnswer{false, UnreadReason::tookTooLong};
    case AnswerSocket::Outcome::NoReader:
      return ContentAnswer{false, UnreadReason::noReader};
    case AnswerSocket::Outcome::Cancelled:
      return ContentAnswer{false, UnreadReason::none};
    }
  }
}

} // namespace searchsystem
