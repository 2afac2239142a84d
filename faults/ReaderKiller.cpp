#include "faults/ReaderKiller.h"

#include "platform/foundation/FileDescriptor.h"

#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace searchsystem {

namespace {

struct ProcessStatus {
  std::string name;
  pid_t parent = 0;
};

ProcessStatus statusOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string line;
  std::getline(file, line);
  const std::size_t begin = line.find('('), end = line.rfind(')');
  ProcessStatus status;
  if (end == std::string::npos ||
      std::sscanf(line.c_str() + end + 1, " %*c %d", &status.parent) != 1)
    return {};
  status.name = line.substr(begin + 1, end - begin - 1);
  return status;
}

/// As much of the program's name as the system keeps.
bool isReader(const ProcessStatus &status) { return status.name == "searchsystem-re"; }

/// Starters are adopted by this process, and workers are theirs.
bool isOurs(pid_t process) {
  const ProcessStatus status = statusOf(process);
  if (!isReader(status) || status.parent == getpid())
    return isReader(status);
  const ProcessStatus parent = statusOf(status.parent);
  return isReader(parent) && parent.parent == getpid();
}

std::vector<pid_t> readers() {
  std::vector<pid_t> found;
  for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    pid_t process = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
    if (error == std::errc() && *end == '\0' && isOurs(process))
      found.push_back(process);
  }
  return found;
}

/// A number may have become another process's meanwhile, a descriptor not.
void killReader(pid_t process) {
  const FileDescriptor descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  if (descriptor && isOurs(process))
    syscall(SYS_pidfd_send_signal, descriptor.number(), SIGKILL, nullptr, 0);
}

} // namespace

ReaderKiller::ReaderKiller(std::uint64_t seed)
    : thread_([this, seed] {
        std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
        while (!isOver_) {
          std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
          const std::vector<pid_t> all = readers();
          if (!all.empty())
            killReader(all[random() % all.size()]);
        }
      }) {}

ReaderKiller::~ReaderKiller() {
  isOver_ = true;
  thread_.join();
}

} // namespace searchsystem
