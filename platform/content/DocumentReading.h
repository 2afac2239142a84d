#pragma once

#include "platform/content/Cancellation.h"
#include "platform/content/ContentAnswer.h"
#include "platform/content/TextComparison.h"

#include <cstdint>
#include <optional>

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
  /// None when worker and program were lost.
  [[nodiscard]] std::optional<ContentAnswer> readOnce(int document);

  Cancellation &cancellation_;
  TextComparison &comparison_;
  std::uint64_t start_ = 0;
};

} // namespace searchsystem
