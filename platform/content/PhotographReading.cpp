#include "platform/content/PhotographReading.h"

#include <algorithm>
#include <utility>

namespace searchsystem {

PhotographReading::PhotographReading(PhotographWorkers &workers, TextComparison *comparison)
    : workers_(workers), records_(comparison, ReaderConnection::shared().limits().text) {}

void PhotographReading::read(std::span<const OpenPhotograph> photographs, const Taker &take) {
  // The program may have ended just when it was asked, or been killed.
  constexpr int mostTries = 2;
  int tries = 0;
  read_ = 0;
  isCareful_ = false;
  while (read_ < photographs.size()) {
    const std::size_t before = read_;
    const bool isLost = !askWorker(photographs, take);
    if (workers_.isCancelled()) {
      while (read_ < photographs.size())
        giveUpFirst(UnreadReason::none, take);
      return;
    }
    tries = isLost && read_ == before ? tries + 1 : isLost ? 1 : 0;
    if (tries == mostTries) {
      ReaderConnection::shared().noteSilence(start_);
      giveUpFirst(UnreadReason::noReader, take);
      tries = 0;
    }
  }
}

bool PhotographReading::askWorker(std::span<const OpenPhotograph> photographs, const Taker &take) {
  std::unique_ptr<PhotographWorker> worker = isCareful_ ? workers_.start() : workers_.take();
  if (!worker) {
    giveUpFirst(UnreadReason::noReader, take);
    return true;
  }
  start_ = worker->socket().start();
  const std::size_t end = std::min(photographs.size(), read_ + PhotographBatch::mostPhotographs);
  const bool areAlone = isCareful_ || end - read_ == 1;
  const bool isCertain = worker->isNew() && areAlone;
  if (!worker->lend(photographs.subspan(read_, end - read_), !areAlone))
    return false;
  while (read_ < end) {
    const auto state = receive(worker->socket(), areAlone || end - read_ == 1);
    if (!state)
      return false;
    if (*state == PhotographRecords::State::WorkerEnded && !isCertain) {
      isCareful_ = true;
      return true;
    }
    take(read_++, records_.content());
    if (*state == PhotographRecords::State::WorkerEnded)
      return true;
  }
  workers_.giveBack(std::move(worker));
  return true;
}

std::optional<PhotographRecords::State> PhotographReading::receive(AnswerSocket &socket,
                                                                   bool isAlone) {
  records_.restart();
  socket.beginAnswer();
  auto state = records_.takeRest();
  while (state == PhotographRecords::State::Incomplete) {
    std::string_view record;
    switch (socket.receive(record)) {
    case AnswerSocket::Outcome::Record:
      state = records_.take(record);
      break;
    case AnswerSocket::Outcome::TookTooLong:
      state = records_.endWorker(UnreadReason::tookTooLong);
      break;
    case AnswerSocket::Outcome::NoReader:
      state = records_.endWorker(UnreadReason::noReader);
      break;
    case AnswerSocket::Outcome::Lost:
    case AnswerSocket::Outcome::Cancelled:
      return std::nullopt;
    }
  }
  if (state == PhotographRecords::State::Complete && isAlone && records_.isLeft())
    return records_.endWorker(UnreadReason::readerCrashed);
  return state;
}

void PhotographReading::giveUpFirst(UnreadReason reason, const Taker &take) {
  PhotographContent content;
  content.reason = reason;
  take(read_++, content);
}

} // namespace searchsystem
