#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

namespace ssfind {

/// Size and date of an entry itself, not of what a link leads to.
struct EntryStatus {
  std::uint64_t size;
  std::timespec modified;
};

/// Nothing where the entry cannot be examined, as when it has just been removed.
[[nodiscard]] std::optional<EntryStatus> statusOf(const char *path) noexcept;

} // namespace ssfind
