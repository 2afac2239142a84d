#pragma once

namespace searchsystem::ssfind {

/// From now on the first SIGINT, SIGTERM or SIGHUP is remembered and the second ends the process
/// with the commands that it runs, and writing to a closed pipe fails instead of ending it. Signals
/// that the caller ignored stay ignored.
void watchForInterrupts() noexcept;

[[nodiscard]] bool wasInterrupted() noexcept;

} // namespace searchsystem::ssfind
