#pragma once

#include "platform/content/PhotographContent.h"
#include "platform/content/PhotographRecords.h"
#include "platform/content/PhotographWorkers.h"
#include "platform/content/TextComparison.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace searchsystem {

/// Has photographs read by the reader program. One over which a worker ends is not read; those
/// behind it are asked about again.
///
/// Ownership: borrows what it is made of. Threads: one; `Cancellation::cancel` ends its waiting.
class PhotographReading {
public:
  /// Gets what is known of a photograph, which is named by its place among those that were asked
  /// about. Called for each once, in their order. To be made of a reference, `std::ref`, so that
  /// making it takes no memory.
  using Taker = std::function<void(std::size_t, const PhotographContent &)>;

  /// `comparison` may be null.
  PhotographReading(PhotographWorkers &workers, TextComparison *comparison);

  /// Throws `std::bad_alloc`.
  void read(std::span<const OpenPhotograph> photographs, const Taker &take);

private:
  /// Asks one worker about the photographs from the first unread one on; false when it was lost.
  [[nodiscard]] bool askWorker(std::span<const OpenPhotograph> photographs, const Taker &take);
  /// Waits for one whole answer.
  [[nodiscard]] std::optional<PhotographRecords::State> receive(AnswerSocket &socket);
  void giveUpFirst(UnreadReason reason, const Taker &take);

  PhotographWorkers &workers_;
  PhotographRecords records_;
  std::size_t read_ = 0;
  std::uint64_t start_ = 0;
};

} // namespace searchsystem
