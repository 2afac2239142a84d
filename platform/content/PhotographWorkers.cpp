#include "platform/content/PhotographWorkers.h"

#include "platform/content/SendDescriptors.h"

#include <array>
#include <cassert>
#include <optional>
#include <utility>

namespace searchsystem {

bool PhotographWorker::lend(std::span<const OpenPhotograph> photographs,
                            bool mayAnswerTogether) noexcept {
  assert(photographs.size() <= PhotographBatch::mostPhotographs);
  PhotographBatch batch{.mayAnswerTogether = mayAnswerTogether ? 1U : 0U};
  std::array<int, mostSentDescriptors> descriptors{};
  static_assert(mostSentDescriptors >= 2 * PhotographBatch::mostPhotographs);
  std::size_t count = 0;
  const auto add = [&](const OpenFile &file) {
    batch.sizes[count] = file.size;
    descriptors[count++] = file.descriptor.number();
  };
  for (const OpenPhotograph &open : photographs) {
    add(open.photograph);
    if (open.sidecar) {
      batch.sidecars |= std::uint32_t{1} << batch.count;
      add(open.sidecar);
    }
    ++batch.count;
  }
  lent_ += photographs.size();
  socket_.beginAnswer();
  return sendDescriptors(socket_.number(), &batch, sizeof batch, {descriptors.data(), count});
}

std::unique_ptr<PhotographWorker> PhotographWorkers::take() {
  while (true) {
    std::unique_ptr<PhotographWorker> worker;
    const LockGuard guard(lock_);
    if (waiting_.empty())
      break;
    worker = std::move(waiting_.back());
    waiting_.pop_back();
    // One that says something without being asked has ended.
    if (!worker->socket().hasNews())
      return worker;
  }
  return start();
}

std::unique_ptr<PhotographWorker> PhotographWorkers::start() {
  std::optional<ReaderConnection::Lent> lent = ReaderConnection::shared().startPhotographWorker();
  return lent ? std::make_unique<PhotographWorker>(cancellation_, *std::move(lent)) : nullptr;
}

void PhotographWorkers::giveBack(std::unique_ptr<PhotographWorker> worker) noexcept {
  if (worker->isUsedUp())
    return;
  try {
    const LockGuard guard(lock_);
    waiting_.push_back(std::move(worker));
  } catch (...) {
    // A new one is made.
  }
}

} // namespace searchsystem
