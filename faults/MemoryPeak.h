#pragma once

#include <cstddef>

/// How much memory the process has from `malloc` and `new`, all that their blocks take.
///
/// Linked into a program, it takes the place of the C library's functions; where a sanitizer has
/// those for itself, nothing is counted. One thread may ask.
namespace MemoryPeak {

/// Forgets the peak that there was before.
void begin();

/// The most that there was at once since `begin`, beyond what there was then.
[[nodiscard]] std::size_t bytes();

} // namespace MemoryPeak
