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

  /// Takes the next record, of any length. Throws `std::bad_alloc`.
  [[nodiscard]] State take(std::string_view record);
  /// The worker is not to be asked again, for this reason.
  State endWorker(UnreadReason reason) noexcept;
  /// What is known of the photograph; with a reason once its answer is complete.
  [[nodiscard]] const PhotographContent &content() const noexcept { return content_; }
  /// The next photograph follows.
  void restart() noexcept;

private:
  [[nodiscard]] State takeParts(std::string_view parts);
  [[nodiscard]] State takePart(char part, std::string_view content);
  [[nodiscard]] State takeText(std::string_view text);
  State lie() noexcept { return endWorker(UnreadReason::readerCrashed); }

  TextComparison *const comparison_;
  const std::uint64_t longestText_;
  std::uint64_t length_ = 0;
  bool isInField_ = false;
  PhotographContent content_;
};

} // namespace searchsystem
