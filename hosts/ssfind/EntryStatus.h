#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

namespace searchsystem::ssfind {

/// Size and date of an entry itself, links not followed.
struct EntryStatus {
  std::uint64_t size;
  std::timespec modified;
};

/// None if the entry cannot be examined, such as one just removed.
[[nodiscard]] std::optional<EntryStatus> statusOf(const char *path) noexcept;

} // namespace searchsystem::ssfind
