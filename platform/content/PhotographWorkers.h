#pragma once

#include "platform/content/AnswerSocket.h"
#include "platform/content/Cancellation.h"
#include "platform/content/PhotographContent.h"
#include "platform/foundation/NSLock.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace searchsystem {

/// A process that reads photographs, as this one sees it. Its end is the process's.
///
/// Threads: one at a time.
class PhotographWorker {
public:
  /// Throws `std::bad_alloc`.
  PhotographWorker(Cancellation &cancellation, ReaderConnection::Lent lent)
      : socket_(cancellation, std::move(lent)) {}

  /// Asks about photographs, no more than one `PhotographBatch` may have; false when nobody is
  /// there to be asked.
  [[nodiscard]] bool lend(std::span<const OpenPhotograph> photographs,
                          bool mayAnswerTogether) noexcept;
  [[nodiscard]] AnswerSocket &socket() noexcept { return socket_; }

  /// Whether it has not been asked yet.
  [[nodiscard]] bool isNew() const noexcept { return lent_ == 0; }
  /// Whether it has read what one process is to read.
  [[nodiscard]] bool isUsedUp() const noexcept { return lent_ >= mostPhotographs; }

private:
  static constexpr std::size_t mostPhotographs = 64;

  AnswerSocket socket_;
  std::size_t lent_ = 0;
};

/// The photograph workers of one search that wait to be asked again.
///
/// Ownership: borrows the cancellation. Threads: any.
class PhotographWorkers {
public:
  explicit PhotographWorkers(Cancellation &cancellation) noexcept : cancellation_(cancellation) {}

  /// One that waits, or else a new one; null when there is no reader program. Throws
  /// `std::bad_alloc`.
  [[nodiscard]] std::unique_ptr<PhotographWorker> take();
  /// A new one; null when there is no reader program. Throws `std::bad_alloc`.
  [[nodiscard]] std::unique_ptr<PhotographWorker> start();
  [[nodiscard]] bool isCancelled() const noexcept { return cancellation_.isCancelled(); }
  /// Takes one back that has answered all.
  void giveBack(std::unique_ptr<PhotographWorker> worker) noexcept;

private:
  Cancellation &cancellation_;
  NSLock lock_;
  std::vector<std::unique_ptr<PhotographWorker>> waiting_ PF_GUARDED_BY(lock_);
};

} // namespace searchsystem
