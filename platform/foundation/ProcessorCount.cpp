#include "platform/foundation/ProcessorCount.h"

#include <algorithm>
#include <sched.h>
#include <thread>

namespace searchsystem {

int processorCount() noexcept {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof(allowed), &allowed) == 0)
    return std::max(CPU_COUNT(&allowed), 1);
  // A set of this size is too small for the machine.
  return std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
}

} // namespace searchsystem
