#pragma once

namespace ssfind {

/// Has the first SIGINT or SIGTERM remembered instead of ending the process, and the second end it
/// at once; has writing to a closed pipe fail instead of ending the process. A signal that the
/// caller had ignored stays so.
void watchForInterrupts() noexcept;

[[nodiscard]] bool wasInterrupted() noexcept;

} // namespace ssfind
