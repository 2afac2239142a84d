#include "faults/Process.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>

namespace searchsystem {

namespace {

int entriesOf(const char *folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<int>(std::distance(begin(entries), end(entries)));
}

} // namespace

Holdings Holdings::now() {
  Holdings holdings;
  // The listing's own descriptor is among them.
  holdings.descriptors = entriesOf("/proc/self/fd") - 1;
  holdings.threads = entriesOf("/proc/self/task");
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmRSS:"))
      holdings.resident = std::strtol(line.c_str() + 6, nullptr, 10);
  const struct mallinfo2 memory = mallinfo2();
  holdings.allocated = static_cast<long>((memory.uordblks + memory.hblkhd) / 1024);
  return holdings;
}

void adoptDescendants() { prctl(PR_SET_CHILD_SUBREAPER, 1); }

bool areDescendantsGone() {
  for (int i = 0; i < 10'000; ++i) {
    const pid_t process = waitpid(-1, nullptr, WNOHANG);
    if (process < 0)
      return true;
    if (process == 0)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

std::string openDescriptors() {
  std::string all;
  for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    all += " " + entry.path().filename().string() + "=" +
           std::filesystem::read_symlink(entry.path(), error).string();
  }
  return all;
}

int threadsAtRest() {
  // A sanitizer may start its own with the first of the process.
  std::thread([] {}).join();
  return Holdings::now().threads;
}

int threadsAfterRest(int most) {
  int threads = Holdings::now().threads;
  for (int i = 0; i < 100 && threads > most; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    threads = Holdings::now().threads;
  }
  return threads;
}

} // namespace searchsystem
