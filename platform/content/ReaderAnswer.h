#pragma once

#include "platform/content/ContentAnswer.h"
#include "platform/content/TextComparison.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace searchsystem {

/// The records of one answer, as they come from a process that may have been taken over by the file
/// that it read. Nothing that they say is believed but the text: not how long it is, nor that there
/// is an end.
///
/// Ownership: borrows the comparison. Not thread-safe.
class ReaderAnswer {
public:
  ReaderAnswer(TextComparison &comparison, std::uint64_t longestText) noexcept
      : comparison_(comparison), longestText_(longestText) {}

  /// Takes the next record, of any length; the answer once it is known. Throws `std::bad_alloc`.
  [[nodiscard]] std::optional<ContentAnswer> take(std::string_view record);

private:
  TextComparison &comparison_;
  const std::uint64_t longestText_;
  std::uint64_t length_ = 0;
};

} // namespace searchsystem
