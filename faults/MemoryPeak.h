#pragma once

#include <cstddef>

namespace searchsystem {

/// The memory that the process has from `malloc` and `new`, whole blocks.
///
/// Linked into a program, it replaces the C library's functions; where a sanitizer replaces them,
/// nothing is counted. One thread may ask.
namespace MemoryPeak {

/// Forgets the peak so far.
void begin();

/// The peak since `begin`, less the memory in use then.
[[nodiscard]] std::size_t bytes();

} // namespace MemoryPeak

} // namespace searchsystem
