#pragma once

namespace searchsystem {

/// How many processors the process may use; at least 1.
[[nodiscard]] int processorCount() noexcept;

} // namespace searchsystem
