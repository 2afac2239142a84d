#pragma once

#include "platform/foundation/NSThread.h"

#include <cstddef>

namespace searchsystem {

/// Empties a container, on another thread if that would block the main thread for long. Main
/// thread.
template <class Container> void freeElsewhere(Container &container) noexcept {
  class FreeingJob final : public ThreadJob {
  public:
    /// Takes over what the container holds. Even an empty one may need memory: throws
    /// `std::bad_alloc`, and then nothing has been taken.
    explicit FreeingJob(Container &taken) { container_.swap(taken); }

  private:
    void main() override {
      // Leaves an empty container to the destructor, which runs on the main thread.
      Container().swap(container_);
    }
    void ended() noexcept override { delete this; }

    Container container_;
  };
  // Freeing this many strings takes about a millisecond.
  constexpr std::size_t mostFreedAtOnce = 20'000;
  if (container.size() > mostFreedAtOnce) {
    try {
      NSThread::detachNewThread(*new FreeingJob(container));
    } catch (...) {
      // Without memory for the job, empty it here.
    }
  }
  container.clear();
}

} // namespace searchsystem
