#pragma once

#include "testing/TemporaryTree.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace searchsystem {

/// What became of one run of the command.
struct Outcome {
  int code = -1;
  std::string out = "", err = "";

  bool operator==(const Outcome &) const = default;
};

inline std::ostream &operator<<(std::ostream &stream, const Outcome &outcome) {
  return stream << "exit code " << outcome.code << ", " << testing::PrintToString(outcome.out)
                << ", error: " << testing::PrintToString(outcome.err);
}

/// With the lines of the output in the order of their bytes, for matches without a defined order.
inline Outcome sorted(Outcome outcome) {
  std::istringstream stream(std::exchange(outcome.out, {}));
  std::set<std::string> lines;
  for (std::string line; std::getline(stream, line);)
    EXPECT_TRUE(lines.insert(line).second) << "twice: " << line;
  for (const std::string &line : lines)
    outcome.out += line + '\n';
  return outcome;
}

/// One run of the real command, killed when it does not end by itself.
class Command {
public:
  /// The exit code when the step of prepare() fails.
  static constexpr int notPrepared = 99;

  Command(std::string folder, std::vector<std::string> arguments)
      : folder_(std::move(folder)), arguments_(std::move(arguments)) {}
  ~Command() {
    for (const int file : files_)
      close(file);
  }
  Command(const Command &) = delete;
  Command &input(const std::string &text) {
    EXPECT_EQ(pwrite(files_[0], text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    return *this;
  }
  /// Have standard output be this descriptor, which stays the caller's; -1 is closed.
  Command &outputTo(int descriptor) { return standard_[1] = descriptor, *this; }
  /// Called in the new process just before the command begins; false ends it.
  Command &prepare(std::function<bool()> step) { return prepare_ = std::move(step), *this; }

  Outcome run() { return start(), finish(); }

  pid_t start() {
    process_ = fork();
    if (process_ == 0)
      become();
    return process_;
  }
  Outcome finish() {
    int status = 0;
    waitpid(process_, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status), contentOf(files_[1]),
            contentOf(files_[2])};
  }

private:
  [[noreturn]] void become() {
    // A shell starts what runs in the background without interrupts.
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE, SIGALRM})
      std::signal(signal, SIG_DFL);
    constexpr unsigned secondsToLive = 40;
    alarm(secondsToLive);
    for (int i = 0; i < 3; ++i)
      if (dup2(standard_[i], i) < 0)
        close(i);
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    setenv("TERM", "xterm", 1);
    unsetenv("NO_COLOR");
    std::vector<char *> arguments{const_cast<char *>("ssfind")};
    for (std::string &argument : arguments_)
      arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    if (chdir(folder_.c_str()) == 0 && prepare_())
      execv(SSFIND_BINARY, arguments.data());
    _exit(notPrepared);
  }

  static int fileInMemory() { return memfd_create("standard stream", MFD_CLOEXEC); }
  static std::string contentOf(int file) {
    std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    return pread(file, text.data(), text.size(), 0) < 0 ? "" : text;
  }

  std::string folder_;
  std::vector<std::string> arguments_;
  std::function<bool()> prepare_ = [] { return true; };
  const int files_[3] = {fileInMemory(), fileInMemory(), fileInMemory()};
  int standard_[3] = {files_[0], files_[1], files_[2]};
  pid_t process_ = -1;
};

/// Makes a tree and runs the command in it, with a cache folder of its own.
class CommandTest : public testing::Test {
protected:
  CommandTest() { setenv("XDG_CACHE_HOME", cache.path().c_str(), 1); }

  struct Row {
    std::vector<std::string> arguments;
    std::string out, err = "";
    int code = 0;
    std::string input = "";
  };

  void expect(const std::vector<Row> &rows) {
    for (const Row &row : rows)
      EXPECT_EQ(sorted(run(row.arguments, row.input)), (Outcome{row.code, row.out, row.err}))
          << testing::PrintToString(row.arguments) << " < " << row.input;
  }

  Outcome run(std::vector<std::string> arguments, const std::string &input = "") {
    return Command(tree.path(), std::move(arguments)).input(input).run();
  }

  TemporaryTree tree, cache;
};

} // namespace searchsystem
