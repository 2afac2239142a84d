#pragma once

#include "tests/support/TemporaryTree.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <ostream>
#include <string>
#include <sys/types.h>
#include <vector>

/// What became of one run of the command.
struct Outcome {
  int code = -1;
  std::string out = "";
  std::string err = "";
  /// What was run; not compared.
  std::string command = "";

  bool operator==(const Outcome &other) const {
    return code == other.code && out == other.out && err == other.err;
  }
};

std::ostream &operator<<(std::ostream &stream, const Outcome &outcome);

/// With the lines of the output in the order of their bytes, for matches without a defined order.
Outcome sorted(Outcome outcome);

/// One run of the real command, in an environment of its own.
class Command {
public:
  /// The exit code when a step of prepare() fails.
  static constexpr int notPrepared = 99;

  Command(std::string folder, std::vector<std::string> arguments);
  ~Command();
  Command(const Command &) = delete;
  Command &operator=(const Command &) = delete;

  Command &environment(const std::string &name, std::string value);
  Command &input(const std::string &text);
  /// Have standard input or output be this descriptor, which stays the caller's; -1 is closed.
  Command &inputFrom(int descriptor) { return input_ = descriptor, *this; }
  Command &outputTo(int descriptor) { return output_ = descriptor, *this; }
  /// Called in the new process just before the command begins; false ends it.
  Command &prepare(std::function<bool()> step) { return prepare_ = std::move(step), *this; }

  Outcome run();

  /// The parts of run(), for tests that act in the middle.
  pid_t start();
  Outcome finish();
  [[nodiscard]] bool isRunning() const;

private:
  [[noreturn]] void become() const;

  const std::string folder_;
  const std::vector<std::string> arguments_;
  std::map<std::string, std::string> environment_{{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"},
                                                  {"TERM", "xterm"}};
  std::function<bool()> prepare_ = [] { return true; };
  // Files in memory, unless the test brings something else.
  const int ownInput_;
  const int ownOutput_;
  const int error_;
  int input_;
  int output_;
  pid_t process_ = -1;
};

/// Makes a tree and runs the command in it.
class CommandTest : public testing::Test {
protected:
  Outcome run(std::vector<std::string> arguments, const std::string &input = "") {
    return Command(tree.path(), std::move(arguments)).input(input).run();
  }

  TemporaryTree tree;
};

/// For Command::prepare, each false where the system does not allow it: takes the right to pass
/// over the permissions of files away, also from root.
bool dropPrivileges();

/// For Command::prepare: gives the right to mount, in a view that no other process shares.
bool enterOwnMounts();
