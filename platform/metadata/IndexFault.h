#pragma once

namespace searchsystem {

/// Why the index cannot be used.
enum class IndexFault {
  None,
  /// It does not exist.
  Missing,
  /// For now: it is locked, memory is short, or the disk is full or read-only.
  Unavailable,
  /// It is damaged, or is not an index.
  Broken,
};

} // namespace searchsystem
