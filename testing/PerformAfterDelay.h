#pragma once

#include "platform/foundation/Perform.h"

#include <memory>
#include <utility>

namespace searchsystem {

/// Makes the main thread call `function` after a delay in seconds. Throws `std::bad_alloc`, and
/// then nothing has been scheduled. Main thread.
template <class Function> void performAfterDelay(double seconds, Function function) {
  class Delayed final : public TimedWork {
  public:
    explicit Delayed(Function &&f) : function_(std::move(f)) {}

  private:
    void fire() override { function_(); }
    void finished() noexcept override { delete this; }
    Function function_;
  };
  MainRunLoop::shared().schedule(*std::make_unique<Delayed>(std::move(function)).release(),
                                 performDelay(seconds));
}

} // namespace searchsystem
