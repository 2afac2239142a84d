#pragma once

#include "streams/MemoryShortage.h"

#include <new>

namespace searchsystem {

/// The result of `work`, or 0 when memory is short for it. Any thread.
template <class Work> int zeroWithoutMemory(const Work &work) {
  try {
    return work();
  } catch (const std::bad_alloc &) {
    MemoryShortage::note();
    return 0;
  }
}

} // namespace searchsystem
