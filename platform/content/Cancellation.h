#pragma once

#include "platform/foundation/NSLock.h"

#include <atomic>

namespace searchsystem {

/// Whether the reading of a search has been cancelled, and the sockets on which its threads wait.
/// Threads: any.
class Cancellation {
public:
  /// Shuts all awaited sockets down, now and from now on.
  void cancel() noexcept;

  [[nodiscard]] bool isCancelled() const noexcept { return isCancelled_.load(); }
  [[nodiscard]] const std::atomic<bool> &flag() const noexcept { return isCancelled_; }

  /// A socket on which a thread waits for an answer. It is shut down by `cancel` and at the end of
  /// this.
  class Awaited {
  public:
    Awaited(Cancellation &cancellation, int socket) noexcept;
    ~Awaited();
    Awaited(const Awaited &) = delete;
    Awaited &operator=(const Awaited &) = delete;

  private:
    friend class Cancellation;
    Cancellation &cancellation_;
    const int socket_;
    Awaited *next_ = nullptr;
  };

private:
  std::atomic<bool> isCancelled_{false};
  NSLock lock_;
  Awaited *awaited_ PF_GUARDED_BY(lock_) = nullptr;
};

} // namespace searchsystem
