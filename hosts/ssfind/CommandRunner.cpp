#include "hosts/ssfind/CommandRunner.h"

#include "hosts/ssfind/Interrupt.h"
#include "hosts/ssfind/RunningChildren.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace searchsystem::ssfind {

namespace {

std::size_t sizeOf(const std::string &argument) { return argument.size() + 1 + sizeof(char *); }

/// The bytes that a new process's arguments may take beside its environment.
std::size_t argumentSpace() {
  constexpr long usualSpace = 128L << 10, reserve = 4096;
  const long all = sysconf(_SC_ARG_MAX);
  long space = (all > 0 ? all : usualSpace) - reserve;
  for (char **variable = environ; *variable != nullptr; ++variable)
    space -= static_cast<long>(std::strlen(*variable) + 1 + sizeof(char *));
  return static_cast<std::size_t>(std::max(space, reserve));
}

} // namespace

CommandRunner::CommandRunner(const CommandTemplate &command, std::size_t jobs, Output &output,
                             StandardError &errors)
    : command_(command), jobs_(std::clamp<std::size_t>(jobs, 1, runningChildren::most)),
      output_(output), errors_(errors) {
  std::size_t fixed = 0;
  for (const std::string &argument : command_.argumentsFor({}))
    fixed += sizeOf(argument);
  const std::size_t space = argumentSpace();
  mostInBatch_ = space - std::min(fixed, space);
}

void CommandRunner::run(const std::string &path) {
  if (!command_.isBatch()) {
    start({path});
    return;
  }
  const std::vector<std::string> without = command_.argumentsFor({});
  const std::vector<std::string> with = command_.argumentsFor({path});
  std::size_t size = 0;
  for (const std::string &argument : with)
    size += sizeOf(argument);
  for (const std::string &argument : without)
    size -= sizeOf(argument);
  if (batchSize_ + size > mostInBatch_ && !batch_.empty())
    runBatch();
  batch_.push_back(path);
  batchSize_ += size;
}

void CommandRunner::runBatch() {
  start(batch_);
  batch_.clear();
  batchSize_ = 0;
}

bool CommandRunner::isOver() const noexcept {
  return cannotStart_ || wasInterrupted() || output_.error() != 0;
}

void CommandRunner::start(const std::vector<std::string> &paths) {
  const bool isAlone = command_.isBatch() || jobs_ == 1;
  waitWhileMoreThan(jobs_ - 1);
  if (isOver())
    return;
  if (isAlone) {
    errors_.clearProgress();
    output_.flush();
  }
  const std::vector<std::string> arguments = command_.argumentsFor(paths);
  std::optional<Child> child =
      Child::start(arguments, isAlone ? Child::Streams::Shared : Child::Streams::Kept);
  if (!child) {
    errors_.reportFailure(arguments.front(), errno);
    hasFailed_ = true;
    cannotStart_ = command_.hasFixedProgram();
    return;
  }
  running_.push_back(*std::move(child));
  if (isAlone)
    waitWhileMoreThan(0);
}

void CommandRunner::finish() {
  if (!batch_.empty())
    runBatch();
  waitWhileMoreThan(0);
}

void CommandRunner::waitWhileMoreThan(std::size_t count) {
  constexpr int milliseconds = 100;
  while (running_.size() > count || (isOver() && !running_.empty())) {
    output_.checkReader();
    if ((wasInterrupted() || output_.error() != 0) && !areEnding_) {
      areEnding_ = true;
      runningChildren::sendToAll(SIGTERM);
    }
    collect(milliseconds);
  }
}

void CommandRunner::collect(int milliseconds) {
  std::vector<pollfd> descriptors;
  for (const Child &child : running_)
    descriptors.push_back({child.descriptor(), POLLIN, 0});
  if (!descriptors.empty())
    poll(descriptors.data(), descriptors.size(), milliseconds);
  std::erase_if(running_, [&](Child &child) {
    const std::optional<int> status = child.status();
    if (status)
      take(child, *status);
    return status.has_value();
  });
}

void CommandRunner::take(Child &child, int status) {
  const bool isSuccess = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  hasFailed_ |= !isSuccess && !areEnding_;
  if (const std::string text = child.errors(); !text.empty())
    errors_.write(text);
  if (const std::string text = child.output(); !text.empty()) {
    errors_.clearProgress();
    output_.text() += text;
    output_.flush();
  }
}

} // namespace searchsystem::ssfind
