#include "readers/process/Starter.h"

#include "readers/ReadResult.h"
#include "readers/ReaderProtocol.h"
#include "readers/process/ReceivedRequest.h"
#include "readers/process/Seal.h"
#include "readers/process/Worker.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sched.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace searchsystem {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// How often memory is looked at where the kernel cannot limit it.
constexpr milliseconds memoryLook{20};

/// A worker that lives, or one whose end could not yet be told.
struct Worker {
  /// -1 once it has been reaped.
  pid_t process;
  /// -1 once nobody listens any more.
  int socket;
  Clock::time_point deadline;
  std::uint64_t memory;
  /// Why it was killed, or how it ended.
  UnreadReason reason = UnreadReason::none;
};

void closeIfOpen(int descriptor) noexcept {
  if (descriptor >= 0)
    close(descriptor);
}

/// Never waits.
bool sendRecord(int socket, ReaderRecord kind, UnreadReason reason) noexcept {
  const char record[] = {static_cast<char>(kind), static_cast<char>(reason)};
  return send(socket, record, sizeof record, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0 || errno != EAGAIN;
}

std::uint64_t residentMemory(pid_t process) noexcept {
  char path[40];
  std::snprintf(path, sizeof path, "/proc/%d/statm", process);
  std::FILE *const file = std::fopen(path, "re");
  if (file == nullptr)
    return 0;
  unsigned long long all = 0, resident = 0;
  const int count = std::fscanf(file, "%llu %llu", &all, &resident);
  std::fclose(file);
  return count == 2 ? resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) : 0;
}

class Starter {
public:
  explicit Starter(DocumentReader &reader);
  void run();

private:
  [[nodiscard]] timespec timeToWait() const noexcept;
  /// False when there is nobody left to work for.
  [[nodiscard]] bool waitAndServe();
  void collectDescriptors();
  /// False when the socket has ended.
  [[nodiscard]] bool receive();
  void lend(ReceivedRequest &received);
  static void refuse(const ReceivedRequest &received) noexcept;
  void reapWorkers() noexcept;
  void checkWorkers() noexcept;
  void listen(Worker &worker, short events) noexcept;
  void forgetFinished() noexcept;
  static void kill(Worker &worker, UnreadReason reason) noexcept;
  static void report(Worker &worker) noexcept;

  DocumentReader &reader_;
  const std::optional<Seal> documentSeal_ = Seal::prepare(ReaderTask::document);
  const std::optional<Seal> photographSeal_ = Seal::prepare(ReaderTask::photographs);
  const pid_t process_ = getpid();
  int firstForeignDescriptor_ = INT_MAX;
  sigset_t signalsWhileWaiting_{};
  std::vector<Worker> workers_;
  std::vector<pollfd> polled_;
  milliseconds idleTime_ = milliseconds(ReaderLimits().idleMilliseconds);
  Clock::time_point lastWork_ = Clock::now();
};

Starter::Starter(DocumentReader &reader) : reader_(reader) {
  workers_.reserve(mostReaderWorkers);
  polled_.reserve(2 + mostReaderWorkers);
  sigset_t childEnds;
  sigemptyset(&childEnds);
  sigaddset(&childEnds, SIGCHLD);
  sigprocmask(SIG_BLOCK, &childEnds, &signalsWhileWaiting_);
  struct sigaction wakeUp {};
  wakeUp.sa_handler = [](int) {};
  sigaction(SIGCHLD, &wakeUp, nullptr);
  const int next = dup(requestSocketDescriptor);
  if (next >= 0) {
    firstForeignDescriptor_ = next;
    close(next);
  }
}

void Starter::run() {
  while (waitAndServe())
    continue;
}

timespec Starter::timeToWait() const noexcept {
  auto until = lastWork_ + idleTime_;
  if (!workers_.empty()) {
    until = Clock::time_point::max();
    for (const Worker &worker : workers_)
      if (worker.process >= 0)
        until = std::min(until, worker.deadline);
    if (isSanitized)
      until = std::min(until, Clock::now() + memoryLook);
  }
  const auto left = std::clamp<Clock::duration>(until - Clock::now(), Clock::duration::zero(),
                                                std::chrono::hours(1));
  const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
  return {static_cast<time_t>(seconds.count()),
          static_cast<long>(std::chrono::nanoseconds(left - seconds).count())};
}

void Starter::collectDescriptors() {
  // Who has answered may still be on its way out: the next request waits for it.
  const short requests = workers_.size() < mostReaderWorkers ? POLLIN : 0;
  polled_.assign({{requestSocketDescriptor, requests, 0}, {servedProcessDescriptor, POLLIN, 0}});
  // Of a worker that lives, only the end of interest in it matters; the end of one that is gone
  // waits for room.
  for (const Worker &worker : workers_)
    polled_.push_back({worker.socket, static_cast<short>(worker.process < 0 ? POLLOUT : 0), 0});
}

bool Starter::waitAndServe() {
  collectDescriptors();
  const timespec wait = timeToWait();
  const int count = ppoll(polled_.data(), polled_.size(), &wait, &signalsWhileWaiting_);
  if (count < 0 && errno != EINTR)
    return false;
  reapWorkers();
  if (count > 0) {
    if (polled_[1].revents != 0 || (polled_[0].revents & POLLHUP) != 0)
      return false;
    for (std::size_t i = 0; i < workers_.size(); ++i)
      listen(workers_[i], polled_[2 + i].revents);
  }
  checkWorkers();
  forgetFinished();
  if (count > 0 && polled_[0].revents != 0 && !receive())
    return false;
  return !workers_.empty() || Clock::now() < lastWork_ + idleTime_;
}

void Starter::listen(Worker &worker, short events) noexcept {
  if ((events & (POLLHUP | POLLERR | POLLNVAL)) != 0) {
    closeIfOpen(worker.socket);
    worker.socket = -1;
    kill(worker, UnreadReason::none);
  } else if ((events & POLLOUT) != 0) {
    report(worker);
  }
}

bool Starter::receive() {
  ReceivedRequest received;
  switch (received.receive(requestSocketDescriptor)) {
  case ReceivedRequest::Result::Ended:
    return false;
  case ReceivedRequest::Result::Nothing:
    return true;
  case ReceivedRequest::Result::Unknown:
    refuse(received);
    return true;
  case ReceivedRequest::Result::Known:
    break;
  }
  if (documentSeal_ && photographSeal_)
    lend(received);
  else
    refuse(received);
  return true;
}

void Starter::refuse(const ReceivedRequest &received) noexcept {
  if (received.socket() >= 0)
    sendRecord(received.socket(), ReaderRecord::end, UnreadReason::noReader);
}

void Starter::lend(ReceivedRequest &received) {
  const ReaderLimits &limits = received.request().limits;
  idleTime_ = milliseconds(limits.idleMilliseconds);
  lastWork_ = Clock::now();
  if (received.request().wantsSignOfLife != 0)
    sendRecord(received.socket(), ReaderRecord::alive, UnreadReason::none);
  const bool readsDocument = received.request().task == ReaderTask::document;
  const pid_t process = fork();
  if (process == 0) {
    sigprocmask(SIG_SETMASK, &signalsWhileWaiting_, nullptr);
    work({reader_, readsDocument ? *documentSeal_ : *photographSeal_, limits, received.socket(),
          received.document(), firstForeignDescriptor_, process_});
  }
  if (process < 0)
    refuse(received);
  else
    workers_.push_back(
        {process, received.takeSocket(),
         // Over photographs the host watches.
         readsDocument ? lastWork_ + milliseconds(limits.milliseconds) : Clock::time_point::max(),
         limits.memory});
}

void Starter::reapWorkers() noexcept {
  int status = 0;
  for (pid_t process = 0; (process = waitpid(-1, &status, WNOHANG)) > 0;) {
    lastWork_ = Clock::now();
    const auto worker = std::ranges::find(workers_, process, &Worker::process);
    if (worker == workers_.end())
      continue;
    worker->process = -1;
    const bool isOverTime = WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU;
    if (worker->reason == UnreadReason::none)
      worker->reason = isOverTime ? UnreadReason::tookTooLong : UnreadReason::readerCrashed;
    report(*worker);
  }
}

void Starter::checkWorkers() noexcept {
  for (Worker &worker : workers_) {
    if (worker.process < 0 || worker.reason != UnreadReason::none)
      continue;
    if (Clock::now() >= worker.deadline)
      kill(worker, UnreadReason::tookTooLong);
    else if (isSanitized && residentMemory(worker.process) > worker.memory)
      kill(worker, UnreadReason::tooLarge);
  }
}

void Starter::forgetFinished() noexcept {
  std::erase_if(workers_,
                [](const Worker &worker) { return worker.process < 0 && worker.socket < 0; });
}

void Starter::kill(Worker &worker, UnreadReason reason) noexcept {
  if (worker.process <= 0)
    return;
  worker.reason = reason;
  // It cannot be asked again before it is gone.
  worker.deadline = Clock::time_point::max();
  ::kill(worker.process, SIGKILL);
}

/// Says how a worker has ended, in case that it has not done so itself: what follows the end of an
/// answer nobody reads.
void Starter::report(Worker &worker) noexcept {
  if (worker.socket < 0 || !sendRecord(worker.socket, ReaderRecord::end, worker.reason))
    return;
  close(worker.socket);
  worker.socket = -1;
}

/// What the host's thread handed down, and what workers inherit.
void leaveBehind() noexcept {
  // Nothing of a library may come to be written into a socket.
  int descriptor = -1;
  do
    descriptor = open("/dev/null", O_RDWR | O_CLOEXEC);
  while (descriptor >= 0 && descriptor < STDERR_FILENO);
  if (descriptor > STDERR_FILENO)
    close(descriptor);
  const sched_param ordinary{};
  sched_setscheduler(0, SCHED_OTHER, &ordinary);
  rlimit files{};
  if (getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < files.rlim_max) {
    files.rlim_cur = std::min<rlim_t>(files.rlim_max, 1024);
    setrlimit(RLIMIT_NOFILE, &files);
  }
  constexpr rlim_t stackSize = 8 << 20;
  rlimit stack{};
  if (getrlimit(RLIMIT_STACK, &stack) == 0) {
    stack.rlim_cur = std::min(stack.rlim_max, stackSize);
    setrlimit(RLIMIT_STACK, &stack);
  }
  // Memory is taken from here first.
  const int score = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
  constexpr std::string_view highest = "1000";
  if (score >= 0) {
    [[maybe_unused]] const ssize_t written = write(score, highest.data(), highest.size());
    close(score);
  }
  // Nobody looks into the processes, and they leave no core.
  prctl(PR_SET_DUMPABLE, 0);
}

} // namespace

void serve(DocumentReader &reader) noexcept {
  leaveBehind();
  reader.prepare();
  Starter(reader).run();
}

} // namespace searchsystem
