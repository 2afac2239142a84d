#include "platform/content/ReaderProcess.h"

#include "readers/ReaderProtocol.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <memory>
#include <new>
#include <sched.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

// The two processes between a thread and the program share its memory, while it waits for them.
// They make calls to the system directly: the C library's own functions would change what the host
// has of its locks and handlers, and a sanitizer takes them for a thread of the host.
#define SEARCHSYSTEM_BETWEEN_PROCESSES                                                             \
  __attribute__((no_sanitize("address", "thread", "undefined"), no_stack_protector))

// The C library's clone under its other name: a sanitizer takes every clone for one that shares no
// memory, and forgets what the calling thread holds.
extern "C" int __clone(int (*body)(void *), void *stack, int flags, void *argument, ...);

namespace searchsystem {

namespace {

constexpr const char *programName = "searchsystem-reader";
/// What the kernel takes for a set of signals.
using KernelSignals = unsigned long;
constexpr KernelSignals allSignals = ~0UL;
constexpr int lastSignal = 64;
constexpr std::size_t stackSize = std::size_t{16} << 10;

struct Start {
  const char *path;
  int socket;
  int servedProcess;
  char *secondStack;
  /// Whether the program has not been executed.
  volatile bool hasFailed;
};

/// The kernel's form of what is done with a signal: a null handler, and everything else default.
struct KernelAction {
  void *handler;
  unsigned long flags;
  void *restorer;
  KernelSignals mask;
};

SEARCHSYSTEM_BETWEEN_PROCESSES
bool becomeSessionOfItsOwn() noexcept {
  if (syscall(SYS_setsid) < 0 || syscall(SYS_chdir, "/") != 0)
    return false;
  const KernelAction ordinary{};
  for (int signal = 1; signal <= lastSignal; ++signal)
    syscall(SYS_rt_sigaction, signal, &ordinary, nullptr, sizeof(KernelSignals));
  const KernelSignals none = 0;
  return syscall(SYS_rt_sigprocmask, SIG_SETMASK, &none, nullptr, sizeof none) == 0;
}

SEARCHSYSTEM_BETWEEN_PROCESSES
bool keepOnly(int socket, int servedProcess) noexcept {
  // Each may lie where the other one belongs.
  constexpr int free = servedProcessDescriptor + 1;
  const long movedSocket = syscall(SYS_fcntl, socket, F_DUPFD, free);
  const long movedProcess = syscall(SYS_fcntl, servedProcess, F_DUPFD, free);
  return movedSocket >= 0 && movedProcess >= 0 &&
         syscall(SYS_dup3, movedSocket, requestSocketDescriptor, 0) >= 0 &&
         syscall(SYS_dup3, movedProcess, servedProcessDescriptor, 0) >= 0 &&
         syscall(SYS_close_range, free, ~0U, 0) == 0 &&
         syscall(SYS_close_range, 0, requestSocketDescriptor - 1, 0) == 0;
}

/// What the process does that becomes the program.
SEARCHSYSTEM_BETWEEN_PROCESSES
int execute(void *argument) noexcept {
  auto &start = *static_cast<Start *>(argument);
  if (becomeSessionOfItsOwn() && keepOnly(start.socket, start.servedProcess)) {
    const char *const arguments[] = {programName, nullptr};
    const char *const environment[] = {nullptr};
    syscall(SYS_execve, start.path, arguments, environment);
  }
  start.hasFailed = true;
  syscall(SYS_exit_group, 1);
  return 1;
}

/// What the child does that never executes a program, and so keeps its exit signal of none.
SEARCHSYSTEM_BETWEEN_PROCESSES
int startAndLeave(void *argument) noexcept {
  auto &start = *static_cast<Start *>(argument);
  const int process =
      __clone(execute, start.secondStack + stackSize, CLONE_VM | CLONE_VFORK | SIGCHLD, &start);
  if (process < 0)
    start.hasFailed = true;
  else if (start.hasFailed)
    syscall(SYS_wait4, process, nullptr, 0, nullptr);
  syscall(SYS_exit_group, 0);
  return 0;
}

/// Both processes come and go in here: the second has executed the program, or failed, when it
/// returns.
bool run(const std::string &path, int socket, int servedProcess) noexcept {
  alignas(std::max_align_t) char stacks[2 * stackSize];
  Start start{path.c_str(), socket, servedProcess, stacks + stackSize, false};
  KernelSignals before = 0;
  syscall(SYS_rt_sigprocmask, SIG_BLOCK, &allSignals, &before, sizeof before);
  const int child = __clone(startAndLeave, stacks + stackSize, CLONE_VM | CLONE_VFORK, &start);
  if (child > 0)
    while (syscall(SYS_wait4, child, nullptr, __WCLONE, nullptr) < 0 && errno == EINTR)
      continue;
  syscall(SYS_rt_sigprocmask, SIG_SETMASK, &before, nullptr, sizeof before);
  return child > 0 && !start.hasFailed;
}

std::string folderOf(const std::string &path) { return path.substr(0, path.rfind('/')); }

} // namespace

std::string pathOfReaderProgram() {
  Dl_info library{};
  if (dladdr(reinterpret_cast<const void *>(&pathOfReaderProgram), &library) == 0)
    return {};
  char path[PATH_MAX];
  if (realpath(library.dli_fname, path) == nullptr)
    return {};
  const std::string folder = folderOf(path);
  for (const char *const place : {"/", "/" SEARCHSYSTEM_READER_FOLDER "/"})
    if (std::string program = folder + place + programName; access(program.c_str(), X_OK) == 0)
      return program;
  return {};
}

FileDescriptor startReaderProgram(const std::string &path) noexcept {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
    return {};
  FileDescriptor ours(ends[0]);
  const FileDescriptor theirs(ends[1]);
  const FileDescriptor thisProcess(static_cast<int>(syscall(SYS_pidfd_open, getpid(), 0)));
  if (!thisProcess || !run(path, theirs.number(), thisProcess.number()))
    return {};
  return ours;
}

} // namespace searchsystem
