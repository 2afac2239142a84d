// Runs a command with its output on a pipe, takes the output in as a reader would, and prints what
// it cost. The processor time is that of all processes that the command started; those that outlive
// it are waited for, but do not count in the total time. A program of its own because it must be
// small: a child's peak memory as the system counts it begins with that of the program that started
// it.
//
// usage: run_timed [--output FILE] COMMAND [ARGUMENT...]

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace searchsystem {

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

int fail(const char *what, int error) {
  std::fprintf(stderr, "run_timed: %s: %s\n", what, std::strerror(error));
  return 125;
}

/// Starts the command with its output on the descriptor; returns an error number.
int start(char **command, int output, pid_t &child) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  const int error = posix_spawnp(&child, command[0], &actions, nullptr, command, environ);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

struct Consumed {
  std::uint64_t bytes = 0;
  double firstByte = -1;
};

Consumed consume(int input, int copy, Clock::time_point started) {
  static std::array<char, std::size_t{64} << 10> buffer;
  Consumed consumed;
  for (;;) {
    const ssize_t size = read(input, buffer.data(), buffer.size());
    if (size < 0 && errno == EINTR)
      continue;
    if (size <= 0)
      return consumed;
    if (consumed.bytes == 0)
      consumed.firstByte = millisecondsSince(started);
    consumed.bytes += static_cast<std::uint64_t>(size);
    if (copy >= 0 && write(copy, buffer.data(), static_cast<std::size_t>(size)) != size)
      fail("the output could not be kept", errno);
  }
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  char **command = argv + 1;
  int copy = -1;
  if (argc > 3 && std::string_view(argv[1]) == "--output") {
    copy = open(argv[2], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (copy < 0)
      return fail(argv[2], errno);
    command += 2;
  }
  if (*command == nullptr) {
    std::fputs("usage: run_timed [--output FILE] COMMAND [ARGUMENT...]\n", stderr);
    return 125;
  }
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    return fail("pipe", errno);

  // What outlives the command becomes a child of this process.
  prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
  const Clock::time_point started = Clock::now();
  pid_t child = 0;
  if (const int error = start(command, ends[1], child))
    return fail(command[0], error);
  close(ends[1]);
  const Consumed consumed = consume(ends[0], copy, started);
  int status = 0;
  rusage own{};
  wait4(child, &status, 0, &own);
  const double total = millisecondsSince(started);
  while (wait(nullptr) > 0 || errno == EINTR) {
  }
  rusage all{};
  getrusage(RUSAGE_CHILDREN, &all);

  const auto milliseconds = [](const timeval &time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  std::printf("total_ms=%.3f\nfirst_byte_ms=%.3f\ncpu_ms=%.3f\nbytes=%ju\npeak_kib=%ld\nexit=%d\n",
              total, consumed.firstByte, milliseconds(all.ru_utime) + milliseconds(all.ru_stime),
              std::uintmax_t{consumed.bytes}, own.ru_maxrss,
              WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
  return 0;
}
