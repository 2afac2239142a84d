#pragma once

#include <new>

namespace searchsystem {

/// The result of `work`; 0, or null, if it throws `std::bad_alloc`. For functions that report every
/// failure with 0: those they call throw, so that who can try again learns why they failed.
template <class Work> auto zeroWithoutMemory(const Work &work) -> decltype(work()) {
  try {
    return work();
  } catch (const std::bad_alloc &) {
    return {};
  }
}

} // namespace searchsystem
