#include "platform/foundation/ProcessorTime.h"

#include <algorithm>
#include <ctime>
#include <thread>

int processorCount() noexcept {
  static const int count = std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
  return count;
}

std::chrono::nanoseconds processorTime() noexcept {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}
