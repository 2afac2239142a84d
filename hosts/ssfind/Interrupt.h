#pragma once

namespace searchsystem::ssfind {

/// From now on the first SIGINT or SIGTERM is remembered and the second ends the process, and
/// writing to a closed pipe fails instead of ending it. Signals that the caller ignored stay
/// ignored.
void watchForInterrupts() noexcept;

[[nodiscard]] bool wasInterrupted() noexcept;

} // namespace searchsystem::ssfind
