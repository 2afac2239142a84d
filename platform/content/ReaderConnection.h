#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSLock.h"
#include "readers/ReaderProtocol.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace searchsystem {

/// The one reader program that a process has, started when it is first needed and again when it is
/// gone.
///
/// A program that cannot be started, or says nothing, is not tried again for ten seconds.
/// Ownership: one per process, never destroyed. Threads: any, unless said otherwise.
class ReaderConnection {
public:
  [[nodiscard]] static ReaderConnection &shared() noexcept;

  /// Where the answers of one worker come from.
  struct Lent {
    FileDescriptor answer;
    /// Which start of the program has been asked.
    std::uint64_t start = 0;
  };

  /// Asks for the text of an open file; none when there is no reader program.
  [[nodiscard]] std::optional<Lent> lend(int document) noexcept {
    return ask(ReaderTask::document, document);
  }
  /// Asks for a worker that reads photographs; none when there is no reader program.
  [[nodiscard]] std::optional<Lent> startPhotographWorker() noexcept {
    return ask(ReaderTask::photographs, noDocument);
  }

  /// The program has answered something.
  void noteAnswer(std::uint64_t start) noexcept;
  [[nodiscard]] bool hasAnswered(std::uint64_t start) noexcept;
  /// The program owes an answer, or has gone without one. If it has never given any, it is dropped.
  void noteSilence(std::uint64_t start) noexcept;

  [[nodiscard]] ReaderLimits limits() noexcept;

  /// A user of the connection comes, and goes; ten seconds after the last one has gone it is
  /// closed. Main thread.
  void beginUse() noexcept;
  void endUse() noexcept;

  /// Has another program started from now on, with other limits; empty for the real one. No use may
  /// be under way. Throws `std::bad_alloc`.
  void useForTesting(std::string program, const ReaderLimits &limits);

private:
  class Closing final : public TimedWork {
  public:
    explicit Closing(ReaderConnection &connection) noexcept : connection_(connection) {}

  private:
    void fire() override { connection_.closeIfUnused(); }
    void finished() noexcept override {}

    ReaderConnection &connection_;
  };

  friend class NeverDestroyed<ReaderConnection>;
  ReaderConnection() noexcept = default;

  static constexpr int noDocument = -1;

  [[nodiscard]] std::optional<Lent> ask(ReaderTask task, int document) noexcept;
  [[nodiscard]] bool start() noexcept PF_REQUIRES(lock_);
  void drop() noexcept PF_REQUIRES(lock_);
  void closeIfUnused() noexcept;

  NSLock lock_;
  FileDescriptor socket_ PF_GUARDED_BY(lock_);
  std::uint64_t start_ PF_GUARDED_BY(lock_) = 0;
  bool hasAnswered_ PF_GUARDED_BY(lock_) = false;
  std::optional<std::chrono::steady_clock::time_point> nextAttempt_ PF_GUARDED_BY(lock_);
  ReaderLimits limits_ PF_GUARDED_BY(lock_);
  std::string program_ PF_GUARDED_BY(lock_);

  // Main thread only.
  int users_ = 0;
  /// By the main loop's clock.
  std::chrono::nanoseconds lastUse_{};
  Closing closing_{*this};
};

} // namespace searchsystem
