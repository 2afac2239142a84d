#pragma once

#include "platform/foundation/NSThread.h"

#include <cstddef>

/// Empties a container, on a thread of its own if that would keep the main thread busy for long.
/// Main thread.
template <class Container> void freeElsewhere(Container &container) noexcept {
  class FreeingJob final : public ThreadJob {
  public:
    /// Takes over what the container holds. Even an empty one may need memory: throws
    /// `std::bad_alloc`, and then nothing has been taken.
    explicit FreeingJob(Container &taken) { container_.swap(taken); }

  private:
    void main() override {
      // What is left to the destructor, on the main thread, is an empty container.
      Container().swap(container_);
    }
    void ended() noexcept override { delete this; }

    Container container_;
  };
  // So many strings are freed in about a millisecond.
  constexpr std::size_t mostFreedAtOnce = 20'000;
  if (container.size() > mostFreedAtOnce) {
    try {
      NSThread::detachNewThread(*new FreeingJob(container));
    } catch (...) {
      // Without memory for the job it is done here, and takes its time.
    }
  }
  container.clear();
}
