#pragma once

#include "platform/content/ContentService.h"
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
/// Ownership: borrows what it is made of. Threads: one; `ContentService::cancel` ends its waiting.
class DocumentReading {
public:
  DocumentReading(ContentService &service, TextComparison &comparison) noexcept
      : service_(service), comparison_(comparison) {}

  /// Throws `std::bad_alloc`.
  [[nodiscard]] ContentAnswer read(int document);

private:
  using Clock = std::chrono::steady_clock;
  enum class Progress { GoesOn, Ended, Lost };

  [[nodiscard]] Progress readOnce(int document);
  [[nodiscard]] Progress receive(int socket, ReaderAnswer &records);
  [[nodiscard]] Progress wait(int socket);
  Progress endWith(ContentAnswer answer) noexcept;

  ContentService &service_;
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
