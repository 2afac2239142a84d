#pragma once

#include "platform/content/ContentService.h"
#include "platform/content/ReaderConnection.h"
#include "platform/content/TextComparison.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string_view>

namespace searchsystem {

/// Has one document read, and compares its text as it arrives. Believes nothing that the reader
/// program says but its text: not how long that is, nor that there is an end.
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
  [[nodiscard]] Progress receive(int socket);
  [[nodiscard]] Progress wait(int socket);
  [[nodiscard]] Progress takeRecord(std::string_view record);
  Progress endWith(UnreadReason reason) noexcept;

  ContentService &service_;
  TextComparison &comparison_;
  ContentAnswer answer_;
  ReaderLimits limits_;
  std::uint64_t start_ = 0;
  Clock::time_point deadline_;
  Clock::time_point firstAnswerDeadline_;
  std::uint64_t received_ = 0;
  std::unique_ptr<char[]> room_;
};

} // namespace searchsystem
