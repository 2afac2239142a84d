#pragma once

/// Why the index is of no help.
enum class IndexFault {
  None,
  /// There is none yet.
  Missing,
  /// It cannot be used at present: it is locked, or the disk is full or read-only.
  Unavailable,
  /// It is damaged, or is something else.
  Broken,
};
