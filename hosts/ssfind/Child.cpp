#include "hosts/ssfind/Child.h"

#include "hosts/ssfind/RunningChildren.h"
#include "hosts/ssfind/Terminal.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace searchsystem::ssfind {

namespace {

/// The signals that may end this process wait while this lives.
class BlockedInterrupts {
public:
  BlockedInterrupts() noexcept {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
      sigaddset(&set, signal);
    pthread_sigmask(SIG_BLOCK, &set, &previous_);
  }
  BlockedInterrupts(const BlockedInterrupts &) = delete;
  BlockedInterrupts &operator=(const BlockedInterrupts &) = delete;
  ~BlockedInterrupts() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }

  [[nodiscard]] const sigset_t &previous() const noexcept { return previous_; }

private:
  sigset_t previous_{};
};

/// What a new process changes of what it inherits.
class Attributes {
public:
  explicit Attributes(const sigset_t &mask) {
    posix_spawn_file_actions_init(&files_);
    posix_spawnattr_init(&attributes_);
    // This process ignores it, which a program would inherit.
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes_, &defaults);
    posix_spawnattr_setsigmask(&attributes_, &mask);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  Attributes(const Attributes &) = delete;
  Attributes &operator=(const Attributes &) = delete;
  ~Attributes() {
    posix_spawn_file_actions_destroy(&files_);
    posix_spawnattr_destroy(&attributes_);
  }

  /// What the program starts can then be ended with it.
  void makeGroup() {
    short flags = 0;
    posix_spawnattr_getflags(&attributes_, &flags);
    posix_spawnattr_setpgroup(&attributes_, 0);
    posix_spawnattr_setflags(&attributes_, static_cast<short>(flags | POSIX_SPAWN_SETPGROUP));
  }

  int keepStreams(int output, int errors) {
    int error = posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (error == 0)
      error = posix_spawn_file_actions_adddup2(&files_, output, STDOUT_FILENO);
    return error != 0 ? error : posix_spawn_file_actions_adddup2(&files_, errors, STDERR_FILENO);
  }

  int start(pid_t &process, char *const *arguments) const {
    return posix_spawnp(&process, arguments[0], &files_, &attributes_, arguments, environ);
  }

private:
  posix_spawn_file_actions_t files_{};
  posix_spawnattr_t attributes_{};
};

} // namespace

std::optional<Child> Child::start(const std::vector<std::string> &arguments, Streams streams) {
  std::vector<char *> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string &argument : arguments)
    pointers.push_back(const_cast<char *>(argument.c_str()));
  pointers.push_back(nullptr);

  Child child;
  const BlockedInterrupts blocked;
  Attributes attributes(blocked.previous());
  int error = 0;
  if (streams == Streams::Kept) {
    child.output_ = memfd_create("output", MFD_CLOEXEC);
    child.errors_ = memfd_create("errors", MFD_CLOEXEC);
    error = child.output_ < 0 || child.errors_ < 0
                ? errno
                : attributes.keepStreams(child.output_, child.errors_);
  }
  // Another group than that of the terminal cannot read from it.
  const bool isGroup = streams == Streams::Kept || !isTerminal(STDIN_FILENO);
  if (isGroup)
    attributes.makeGroup();
  if (error == 0)
    error = attributes.start(child.process_, pointers.data());
  if (error != 0) {
    child.process_ = -1;
    errno = error;
    return std::nullopt;
  }
  child.target_ = isGroup ? -child.process_ : child.process_;
  runningChildren::add(child.target_);
  // Older C libraries have it for C only.
  child.descriptor_ = static_cast<int>(syscall(SYS_pidfd_open, child.process_, 0));
  return child;
}

Child::Child(Child &&other) noexcept { swap(other); }

Child &Child::operator=(Child &&other) noexcept {
  swap(other);
  return *this;
}

void Child::swap(Child &other) noexcept {
  std::swap(process_, other.process_);
  std::swap(target_, other.target_);
  std::swap(descriptor_, other.descriptor_);
  std::swap(output_, other.output_);
  std::swap(errors_, other.errors_);
}

Child::~Child() {
  if (process_ >= 0) {
    kill(target_, SIGKILL);
    runningChildren::remove(target_);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  for (const int file : {descriptor_, output_, errors_})
    if (file >= 0)
      close(file);
}

std::optional<int> Child::status() noexcept {
  siginfo_t ended{};
  const int waited =
      waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOHANG | WNOWAIT);
  if (waited == 0 && ended.si_pid == 0)
    return std::nullopt;
  runningChildren::remove(target_);
  int status = 0;
  // A caller that ignores its children's ends has them reaped without their status.
  if (waitpid(process_, &status, 0) < 0)
    status = 0;
  process_ = -1;
  return status;
}

std::string Child::contentOf(int file) {
  const off_t size = file < 0 ? 0 : lseek(file, 0, SEEK_END);
  std::string text(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  const ssize_t length = text.empty() ? 0 : pread(file, text.data(), text.size(), 0);
  text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  return text;
}

} // namespace searchsystem::ssfind
