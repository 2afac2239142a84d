#include "platform/content/ReaderConnection.h"

#include "platform/content/ReaderProcess.h"
#include "platform/content/SendDescriptors.h"
#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/TryTwice.h"

#include <cassert>
#include <sys/socket.h>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::chrono::seconds timeBetweenAttempts{10};

} // namespace

ReaderConnection &ReaderConnection::shared() noexcept {
  static NeverDestroyed<ReaderConnection> connection;
  return connection.get();
}

std::optional<ReaderConnection::Lent> ReaderConnection::ask(ReaderTask task,
                                                            int document) noexcept {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
    return std::nullopt;
  FileDescriptor ours(ends[0]);
  const FileDescriptor theirs(ends[1]);
  const LockGuard guard(lock_);
  // One that has been idle for long, or was killed, is gone without a word.
  constexpr int mostStarts = 2;
  for (int i = 0; i < mostStarts; ++i) {
    if (!socket_ && !start())
      return std::nullopt;
    const ReaderRequest request{
        .limits = limits_, .wantsSignOfLife = hasAnswered_ ? 0U : 1U, .task = task};
    const int descriptors[] = {theirs.number(), document};
    if (sendDescriptors(socket_.number(), &request, sizeof request,
                        {descriptors, document == noDocument ? 1U : 2U}))
      return Lent{std::move(ours), start_};
    drop();
  }
  return std::nullopt;
}

bool ReaderConnection::start() noexcept {
  const auto now = std::chrono::steady_clock::now();
  if (nextAttempt_ && now < *nextAttempt_)
    return false;
  hasAnswered_ = false;
  ++start_;
  if (program_.empty()) {
    std::string path;
    if (!tryTwice([&] { path = pathOfReaderProgram(); }))
      return false;
    program_ = std::move(path);
  }
  if (!program_.empty())
    socket_ = startReaderProgram(program_);
  if (socket_)
    nextAttempt_.reset();
  else
    nextAttempt_ = now + timeBetweenAttempts;
  return static_cast<bool>(socket_);
}

void ReaderConnection::drop() noexcept {
  // The socket also ends where a fork of this process holds it.
  if (socket_)
    shutdown(socket_.number(), SHUT_RDWR);
  socket_.close();
}

void ReaderConnection::noteAnswer(std::uint64_t start) noexcept {
  const LockGuard guard(lock_);
  hasAnswered_ |= start == start_;
}

bool ReaderConnection::hasAnswered(std::uint64_t start) noexcept {
  const LockGuard guard(lock_);
  return hasAnswered_ && start == start_;
}

void ReaderConnection::noteSilence(std::uint64_t start) noexcept {
  const LockGuard guard(lock_);
  if (start != start_ || hasAnswered_)
    return;
  drop();
  nextAttempt_ = std::chrono::steady_clock::now() + timeBetweenAttempts;
}

ReaderLimits ReaderConnection::limits() noexcept {
  const LockGuard guard(lock_);
  return limits_;
}

void ReaderConnection::beginUse() noexcept {
  assert(MainRunLoop::shared().isMainThread());
  ++users_;
}

void ReaderConnection::endUse() noexcept {
  assert(MainRunLoop::shared().isMainThread());
  --users_;
  lastUse_ = MainRunLoop::shared().now();
  const bool isOpen = [this] {
    const LockGuard guard(lock_);
    return static_cast<bool>(socket_);
  }();
  if (isOpen && !closing_.isScheduled())
    MainRunLoop::shared().schedule(closing_, std::chrono::milliseconds(limits().idleMilliseconds));
}

void ReaderConnection::closeIfUnused() noexcept {
  // Whoever uses it now schedules this again.
  if (users_ > 0)
    return;
  const std::chrono::nanoseconds idleTime = std::chrono::milliseconds(limits().idleMilliseconds);
  const auto unused = MainRunLoop::shared().now() - lastUse_;
  if (unused < idleTime) {
    MainRunLoop::shared().schedule(closing_, idleTime - unused);
    return;
  }
  const LockGuard guard(lock_);
  drop();
}

void ReaderConnection::useForTesting(std::string program, const ReaderLimits &limits) {
  const LockGuard guard(lock_);
  drop();
  nextAttempt_.reset();
  program_ = std::move(program);
  limits_ = limits;
}

} // namespace searchsystem
