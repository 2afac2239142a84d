#include "tests/ssfind/command/Command.h"

#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <set>
#include <sstream>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

int fileInMemory() { return memfd_create("standard stream", MFD_CLOEXEC); }

std::string contentOf(int file) {
  std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
  return pread(file, text.data(), text.size(), 0) < 0 ? "" : text;
}

/// A list for exec, as long as the strings live.
std::vector<char *> pointersTo(const std::vector<std::string> &strings) {
  std::vector<char *> pointers;
  for (const std::string &string : strings)
    pointers.push_back(const_cast<char *>(string.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

} // namespace

std::ostream &operator<<(std::ostream &stream, const Outcome &outcome) {
  return stream << outcome.command << "\nexit code " << outcome.code
                << "\noutput: " << testing::PrintToString(outcome.out)
                << "\nerror: " << testing::PrintToString(outcome.err) << '\n';
}

Outcome sorted(Outcome outcome) {
  std::istringstream stream(std::exchange(outcome.out, {}));
  std::multiset<std::string> lines;
  for (std::string line; std::getline(stream, line);)
    lines.insert(line + '\n');
  for (const std::string &line : lines)
    outcome.out += line;
  return outcome;
}

Command::Command(std::string folder, std::vector<std::string> arguments)
    : folder_(std::move(folder)), arguments_(std::move(arguments)), ownInput_(fileInMemory()),
      ownOutput_(fileInMemory()), error_(fileInMemory()), input_(ownInput_), output_(ownOutput_) {}

Command::~Command() {
  if (process_ > 0)
    kill(process_, SIGKILL);
  finish();
  for (const int file : {ownInput_, ownOutput_, error_})
    close(file);
}

Command &Command::environment(const std::string &name, std::string value) {
  environment_[name] = std::move(value);
  return *this;
}

Command &Command::input(const std::string &text) {
  EXPECT_EQ(pwrite(ownInput_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  return *this;
}

Outcome Command::run() {
  start();
  return finish();
}

pid_t Command::start() {
  process_ = fork();
  if (process_ == 0)
    become();
  return process_;
}

void Command::become() const {
  // A shell starts what runs in the background without interrupts.
  for (const int signal : {SIGINT, SIGTERM, SIGPIPE})
    std::signal(signal, SIG_DFL);
  const auto give = [](int descriptor, int standard) {
    if (descriptor >= 0)
      dup2(descriptor, standard);
    else
      close(standard);
  };
  give(input_, STDIN_FILENO);
  give(output_, STDOUT_FILENO);
  give(error_, STDERR_FILENO);
  std::vector<std::string> arguments{SSFIND_BINARY};
  arguments.insert(arguments.end(), arguments_.begin(), arguments_.end());
  std::vector<std::string> environment;
  for (const auto &[name, value] : environment_)
    environment.push_back(name + '=' + value);
  if (chdir(folder_.c_str()) == 0 && prepare_())
    execve(SSFIND_BINARY, pointersTo(arguments).data(), pointersTo(environment).data());
  _exit(notPrepared);
}

bool Command::isRunning() const {
  siginfo_t ended{};
  return waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         ended.si_pid == 0;
}

Outcome Command::finish() {
  Outcome outcome{-1, {}, {}, "ssfind"};
  for (const std::string &argument : arguments_)
    outcome.command += ' ' + testing::PrintToString(argument);
  int status = 0;
  if (process_ > 0 && waitpid(process_, &status, 0) == process_)
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  process_ = -1;
  outcome.out = contentOf(ownOutput_);
  outcome.err = contentOf(error_);
  return outcome;
}

// In a new user namespace a process has all rights over what belongs to users that are known
// there. Without a map there is none.
bool dropPrivileges() { return unshare(CLONE_NEWUSER) == 0; }

bool enterOwnMounts() {
  const auto writeTo = [](const char *file, const std::string &text) {
    const int descriptor = open(file, O_WRONLY | O_CLOEXEC);
    const bool isWritten = write(descriptor, text.data(), text.size()) > 0;
    close(descriptor);
    return isWritten;
  };
  const std::string user = "0 " + std::to_string(geteuid()) + " 1";
  const std::string group = "0 " + std::to_string(getegid()) + " 1";
  return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeTo("/proc/self/setgroups", "deny") &&
         writeTo("/proc/self/uid_map", user) && writeTo("/proc/self/gid_map", group) &&
         mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}
