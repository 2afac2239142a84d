#pragma once

#include <cstdint>

namespace searchsystem {

/// What decides which folders the process may list: its user and groups, how the user namespace
/// maps them, and whether it may read what permissions forbid.
namespace ProcessRights {

/// Reads them anew. Main thread, before a query.
void learn() noexcept;

/// They in one number, the same for the same rights; 0 if they could not be read. Any thread.
[[nodiscard]] std::uint64_t number() noexcept;

} // namespace ProcessRights

} // namespace searchsystem
