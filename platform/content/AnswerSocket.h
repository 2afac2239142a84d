#pragma once

#include "platform/content/Cancellation.h"
#include "platform/content/ReaderConnection.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace searchsystem {

/// Where a worker's records come from. Waits for them no longer than they may take.
///
/// Ownership: owns the socket; borrows the cancellation. At its end the worker's is near. Threads:
/// one at a time; `Cancellation::cancel` ends the waiting.
class AnswerSocket {
public:
  using Clock = std::chrono::steady_clock;

  /// Throws `std::bad_alloc`.
  AnswerSocket(Cancellation &cancellation, ReaderConnection::Lent lent);

  /// Another answer is awaited from now on, as long as one may take.
  void beginAnswer() noexcept;

  enum class Outcome {
    Record,
    /// The worker has gone without a word, and its starter, too.
    Lost,
    TookTooLong,
    NoReader,
    Cancelled,
  };
  /// Waits for the next record, of any length, which is valid until the next call.
  [[nodiscard]] Outcome receive(std::string_view &record) noexcept;

  [[nodiscard]] int number() const noexcept { return socket_.number(); }
  /// Which start of the program it belongs to.
  [[nodiscard]] std::uint64_t start() const noexcept { return start_; }
  /// Whether something has come, or nothing will any more.
  [[nodiscard]] bool hasNews() const noexcept;

private:
  /// None once a record may be there.
  [[nodiscard]] std::optional<Outcome> wait() const noexcept;

  Cancellation &cancellation_;
  const FileDescriptor socket_;
  const std::uint64_t start_;
  const Cancellation::Awaited awaited_;
  const std::unique_ptr<char[]> room_;
  std::chrono::milliseconds mostTime_;
  Clock::time_point deadline_;
  Clock::time_point firstAnswerDeadline_;
  bool hasAnswered_ = false;
};

} // namespace searchsystem
