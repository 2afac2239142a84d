#pragma once

#include <cstddef>

namespace searchsystem {

/// Sends a record to the host over a worker's socket; false when nobody listens any more.
[[nodiscard]] bool sendRecord(const char *record, std::size_t size) noexcept;

} // namespace searchsystem
