#pragma once

#include "platform/content/PhotographContent.h"
#include "platform/content/TextComparison.h"

#include <cstdint>
#include <string_view>

namespace searchsystem {

/// The records of a photograph worker, as they come from a process that may have been taken over by
/// a file that it read. Nothing that they say is believed but texts and dates: not how long they
/// are, nor that there is an end.
///
/// Ownership: borrows the comparison, which may be null. Not thread-safe.
class PhotographRecords {
public:
  PhotographRecords(TextComparison *comparison, std::uint64_t longestText) noexcept
      : comparison_(comparison), longestText_(longestText) {}

  enum class State {
    Incomplete,
    Complete,
    /// The worker has ended over this photograph, or lies, and is not to be asked again.
    WorkerEnded,
  };

  /// Takes the next record, of any length, as far as it is about one photograph. It must stay as
  /// long as something `isLeft` of it. Throws `std::bad_alloc`.
  [[nodiscard]] State take(std::string_view record);
  /// Whether the last record says something about the next photographs, which `takeRest` takes as
  /// far as it is about one. Throws `std::bad_alloc`.
  [[nodiscard]] bool isLeft() const noexcept { return !rest_.empty(); }
  [[nodiscard]] State takeRest();
  /// The worker is not to be asked again, for this reason.
  State endWorker(UnreadReason reason) noexcept;
  /// What is known of the photograph; with a reason once its answer is complete.
  [[nodiscard]] const PhotographContent &content() const noexcept { return content_; }
  /// The next photograph follows.
  void restart() noexcept;

private:
  [[nodiscard]] State takePart(char part, std::string_view content);
  [[nodiscard]] State takeText(std::string_view text);
  State lie() noexcept { return endWorker(UnreadReason::readerCrashed); }

  TextComparison *const comparison_;
  const std::uint64_t longestText_;
  /// Of the last record.
  std::string_view rest_;
  std::uint64_t length_ = 0;
  bool isInField_ = false;
  PhotographContent content_;
};

} // namespace searchsystem
