// The least work of a query whose index is true: one status call for each of the paths in a file,
// which are lines. Prints what the calls cost, as run_timed does.

#include <chrono>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

} // namespace

int main(int argc, char **argv) {
  if (argc != 2)
    return 2;
  std::vector<std::string> paths;
  std::ifstream lines(argv[1]);
  for (std::string line; std::getline(lines, line);)
    paths.push_back(line);
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  const double processorBegin = processorTime();
  std::size_t failed = 0;
  for (const std::string &path : paths) {
    struct statx status {};
    failed += statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
                    STATX_BASIC_STATS, &status) != 0
                  ? 1
                  : 0;
  }
  const double processor = processorTime() - processorBegin;
  const std::chrono::duration<double, std::milli> total = Clock::now() - begin;
  std::printf("total_ms=%.3f\ncpu_ms=%.3f\npeak_kib=0\nexit=0\npaths=%zu\n", total.count(),
              processor, paths.size());
  return failed == 0 ? 0 : 1;
}
