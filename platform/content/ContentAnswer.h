#pragma once

#include "readers/ReadResult.h"

namespace searchsystem {

/// What a deep reader says of a file.
struct ContentAnswer {
  /// Whether the keyword occurs in what was read.
  bool holds = false;
  /// Why not all was read; of a file that holds the keyword it says nothing.
  UnreadReason reason = UnreadReason::none;
};

} // namespace searchsystem
