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
/// Which one that was is known only where the worker had not waited before, when it may have been
/// killed, and sent each answer alone. Otherwise all without an answer are asked about again in
/// that way.
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
  /// Waits for one whole answer, the last of a record if it `isAlone`.
  [[nodiscard]] std::optional<PhotographRecords::State> receive(AnswerSocket &socket, bool isAlone);
  void giveUpFirst(UnreadReason reason, const Taker &take);

  PhotographWorkers &workers_;
  PhotographRecords records_;
  std::size_t read_ = 0;
  std::uint64_t start_ = 0;
  /// Whether workers are to be new, and to send each answer alone.
  bool isCareful_ = false;
};

} // namespace searchsystem
