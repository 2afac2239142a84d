#include "faults/Verdict.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include <csignal>
#include <unistd.h>

namespace searchsystem {

std::string doing;

namespace {

constexpr int mostPrinted = 40;

std::atomic<int> faults{0};
std::mutex printing;

void hasNotGoneOn(int /*signal*/) {
  constexpr char text[] = "FAULT: nothing has happened for too long, while doing: ";
  [[maybe_unused]] ssize_t written = write(STDERR_FILENO, text, sizeof text - 1);
  written = write(STDERR_FILENO, doing.data(), doing.size());
  written = write(STDERR_FILENO, "\n", 1);
  std::abort();
}

} // namespace

void fault(const std::string &what) {
  const std::lock_guard guard(printing);
  if (++faults <= mostPrinted)
    std::fprintf(stderr, "FAULT: %s: %s\n", doing.c_str(), what.c_str());
}

bool check(bool isTrue, const std::string &what) {
  if (!isTrue)
    fault(what);
  return isTrue;
}

void mustGoOnWithin(int seconds) {
  std::signal(SIGALRM, hasNotGoneOn);
  alarm(static_cast<unsigned>(seconds));
}

int verdict(const std::string &summary) {
  mustGoOnWithin(0);
  std::printf("%s, %d faults\n", summary.c_str(), faults.load());
  return faults == 0 ? 0 : 1;
}

} // namespace searchsystem
