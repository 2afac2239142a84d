#pragma once

#include <cstddef>
#include <sys/types.h>

namespace searchsystem::ssfind {

/// The processes that were started and have not been waited for, for a handler of signals to end.
namespace runningChildren {

/// At most so many run at once.
constexpr std::size_t most = 256;

/// A process, or as a negative number a group of them.
void add(pid_t target) noexcept;
/// Before the process is waited for: later its number may be another's.
void remove(pid_t target) noexcept;
/// Async-signal-safe.
void sendToAll(int signal) noexcept;

} // namespace runningChildren

} // namespace searchsystem::ssfind
