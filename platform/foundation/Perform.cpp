#include "platform/foundation/Perform.h"

#include "platform/foundation/YieldUntil.h"

namespace {

constexpr int yieldsBeforeSleep = 50;

} // namespace

void Waiter::wait() noexcept {
  if (!yieldUntil(yieldsBeforeSleep, [this] { return wakeup_.isWoken(); }))
    wakeup_.sleep();
}

void Waiter::signal() noexcept { wakeup_.wake(); }
