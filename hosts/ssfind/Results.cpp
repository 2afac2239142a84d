#include "hosts/ssfind/Results.h"

#include "hosts/ssfind/Interrupt.h"
#include "hosts/ssfind/Terminal.h"

#include <algorithm>
#include <limits>
#include <thread>
#include <unistd.h>

namespace searchsystem::ssfind {

namespace {

/// After a pause a match is printed at once, in a stream of matches within this time.
constexpr std::chrono::milliseconds flushInterval{20};
constexpr std::chrono::milliseconds idleInterval{100};

bool hasColors(Coloring coloring) {
  if (coloring == Coloring::Auto)
    return isCapableTerminal(STDOUT_FILENO) && !isColorUnwanted();
  return coloring == Coloring::Always;
}

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

std::uint64_t enoughFor(const OutputOptions &options, bool collects) {
  if (options.report == Report::Nothing)
    return 1;
  // Which are the first in an order is known only at the end.
  return collects ? unlimited : options.limit.value_or(unlimited);
}

PFContentProgress progressNow() {
  PFContentProgress progress{};
  PFContentGetProgress(&progress);
  return progress;
}

} // namespace

Results::Results(const OutputOptions &options, bool mayRepeat, Output &output,
                 StandardError &errors)
    : options_(options), mayRepeat_(mayRepeat), output_(output), errors_(errors),
      printer_(options, hasColors(options.coloring), isTerminal(STDOUT_FILENO)),
      collects_(options.report == Report::All && options.order != Order::AsFound),
      enough_(enoughFor(options, collects_)) {
  if (options_.command)
    commands_.emplace(*options_.command,
                      options_.jobs.value_or(std::thread::hardware_concurrency()), output_,
                      errors_);
}

void Results::expectFiles(std::optional<std::uint64_t> count) {
  progress_.filesBefore = progressNow().files;
  progress_.expectedFiles = count;
}

SearchFollower::Next Results::found(std::string_view path) {
  if (isOver())
    return Next::Stop;
  if (mayRepeat_ && !seen_.emplace(path).second)
    return Next::Continue;
  if (options_.report == Report::All)
    take(path);
  if (++count_ >= enough_ || wasInterrupted())
    return Next::Stop;
  if (output_.isFull())
    flush();
  const bool isTurnDue = isWaitingLong_ && !output_.isEmpty();
  isWaitingLong_ = isWaitingLong_ && !isTurnDue;
  return isTurnDue ? Next::TakeTurn : Next::Continue;
}

void Results::unread(std::string_view path, std::int32_t reason) {
  place_.show(path, shown_);
  unread_.add(path, shown_, reason);
}

void Results::take(std::string_view path) {
  place_.show(path, shown_);
  const MatchDetails details = detailsOf(std::string(path));
  if (collects_)
    collected_.push_back({shown_, details});
  else
    deliver(shown_, details);
}

void Results::deliver(const std::string &shown, const MatchDetails &details) {
  if (commands_)
    commands_->run(shown);
  else
    printer_.print(output_.text(), shown, details);
}

MatchDetails Results::detailsOf(const std::string &path) const {
  MatchDetails details;
  const Order order = options_.order;
  if (printer_.needsStatus() || order == Order::NewestFirst || order == Order::LargestFirst)
    details.status = statusOf(path.c_str());
  if (printer_.needsPhotograph() || order == Order::LatestShotFirst)
    details.photograph = photographDetailsOf(path, options_.isDeep);
  return details;
}

SearchFollower::Next Results::takeTurn() {
  const Clock::time_point now = Clock::now();
  if (commands_)
    commands_->collect();
  if (!output_.isEmpty() && now - lastFlush_ >= flushInterval)
    flush();
  else
    output_.checkReader();
  errors_.showProgress(progress_.text(count_, progressNow()), now);
  return isOver() ? Next::Stop : Next::Continue;
}

std::chrono::duration<double> Results::timeToNextTurn() {
  isWaitingLong_ = output_.isEmpty();
  return isWaitingLong_ ? idleInterval : lastFlush_ + flushInterval - Clock::now();
}

bool Results::isOver() const {
  return count_ >= enough_ || wasInterrupted() || output_.error() != 0 ||
         (commands_ && commands_->isOver());
}

void Results::flush() {
  if (isTerminal(STDOUT_FILENO))
    errors_.clearProgress();
  output_.flush();
  lastFlush_ = Clock::now();
}

void Results::finish() {
  errors_.clearProgress();
  if (options_.report == Report::Count)
    output_.text() += std::to_string(count_) + '\n';
  printCollected();
  if (commands_)
    commands_->finish();
  if (options_.report == Report::Unread)
    printUnread();
  flush();
  const bool isWanted = options_.report == Report::All || options_.report == Report::Count;
  if (isWanted && !unread_.isEmpty() && !wasInterrupted())
    errors_.report(unread_.summary() + " (--unread lists them)");
}

void Results::printUnread() {
  for (const auto &[path, file] : unread_.byPath()) {
    printer_.printUnread(output_.text(), file.shown, UnreadFiles::textOf(file.reason));
    if (output_.isFull())
      flush();
  }
}

void Results::printCollected() {
  sortMatches(collected_, options_.order, options_.isReversed);
  const auto size = std::min<std::uint64_t>(collected_.size(), options_.limit.value_or(unlimited));
  for (std::size_t i = 0; i < size; ++i) {
    deliver(collected_[i].path, collected_[i].details);
    if (output_.isFull())
      flush();
  }
}

} // namespace searchsystem::ssfind
