#pragma once

#include "hosts/ssfind/Child.h"
#include "hosts/ssfind/CommandTemplate.h"
#include "hosts/ssfind/Output.h"
#include "hosts/ssfind/StandardError.h"

#include <cstddef>
#include <string>
#include <vector>

namespace searchsystem::ssfind {

/// Runs a command for each match, some at a time, or in batches as large as the system allows.
///
/// One at a time, and batches, have the streams of this process. Of several at a time the output is
/// written when each has ended, so that it is not mixed. An interrupt, and an output that nobody
/// reads any more, end them all.
class CommandRunner {
public:
  CommandRunner(const CommandTemplate &command, std::size_t jobs, Output &output,
                StandardError &errors);

  /// Has the command run for a path, now or later; waits while too many run.
  void run(const std::string &path);

  /// Writes the output of those that have ended.
  void collect() { collect(0); }

  /// Runs what is left, and waits for all.
  void finish();

  /// Whether a command could not be started, or has failed.
  [[nodiscard]] bool hasFailed() const noexcept { return hasFailed_; }
  /// Whether no other will be started.
  [[nodiscard]] bool isOver() const noexcept;

private:
  void start(const std::vector<std::string> &paths);
  void runBatch();
  void waitWhileMoreThan(std::size_t count);
  void collect(int milliseconds);
  void take(Child &child, int status);

  const CommandTemplate command_;
  const std::size_t jobs_;
  Output &output_;
  StandardError &errors_;
  std::vector<Child> running_;
  bool areEnding_ = false;
  bool hasFailed_ = false;
  bool cannotStart_ = false;

  std::vector<std::string> batch_;
  std::size_t batchSize_ = 0;
  /// The bytes that the paths of a batch may take.
  std::size_t mostInBatch_;
};

} // namespace searchsystem::ssfind
