#pragma once

#include "platform/foundation/NSThread.h"

#include <cstddef>
#include <utility>

/// Empties a container, on a thread of its own if that would keep the main thread busy for long.
/// The container must be one that is moved by taking over its memory. Main thread.
template <class Container> void freeElsewhere(Container &container) noexcept {
  class FreeingJob final : public ThreadJob {
  public:
    explicit FreeingJob(Container &taken) noexcept : container_(std::move(taken)) {}

  private:
    void main() override { container_ = Container(); }
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
  container = Container();
}
