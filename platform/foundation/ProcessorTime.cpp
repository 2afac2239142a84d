#include "platform/foundation/ProcessorTime.h"

#include <algorithm>
#include <ctime>
#include <sched.h>
#include <thread>

namespace {

int countProcessors() noexcept {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof(allowed), &allowed) == 0)
    return std::max(CPU_COUNT(&allowed), 1);
  // A set of this size is too small for the machine.
  return std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
}

} // namespace

int processorCount() noexcept {
  static const int count = countProcessors();
  return count;
}

std::chrono::nanoseconds processorTime() noexcept {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}
