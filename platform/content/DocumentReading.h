#pragma once

#include "platform/content/Cancellation.h"
#include "platform/content/ContentAnswer.h"
#include "platform/content/ReaderAnswer.h"
#include "platform/content/ReaderConnection.h"
#include "platform/content/TextComparison.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string_view>

namespace searchsystem {

/// Has one document read by the reader program, and waits for the answer no longer than that may
/// take.
///
/// Ownership: borrows what it is made of. Threads: one; `Cancellation::cancel` ends its waiting.
class DocumentReading {
public:
  DocumentReading(Cancellation &cancellation, TextComparison &comparison) noexcept
      : cancellation_(cancellation), comparison_(comparison) {}

  /// Throws `std::bad_alloc`.
  [[nodiscard]] ContentAnswer read(int document);

private:
  using Clock = std::chrono::steady_clock;
  enum class Progress { GoesOn, Ended, Lost };

  [[nodiscard]] Progress readOnce(int document);
  [[nodiscard]] Progress receive(int socket, ReaderAnswer &records);
  [[nodiscard]] Progress wait(int socket);
  Progress endWith(ContentAnswer answer) noexcept;

  Cancellation &cancellation_;
  TextComparison &comparison_;
  ContentAnswer answer_;
  ReaderLimits limits_;
  std::uint64_t start_ = 0;
  Clock::time_point deadline_;
  Clock::time_point firstAnswerDeadline_;
  bool hasAnswered_ = false;
  std::unique_ptr<char[]> room_;
};

} // namespace searchsystem
