#pragma once

#include <string>

namespace searchsystem {

/// The resources that the process holds.
struct Holdings {
  int descriptors = 0;
  int threads = 0;
  /// Resident memory, and what of it has been allocated and not freed; in KiB.
  long resident = 0;
  long allocated = 0;

  static Holdings now();
};

/// Has this process adopt what its descendants leave behind, so that none of it goes unseen.
void adoptDescendants();

/// Waits, for some seconds at most, until the process has no child any more; whether it has none.
bool areDescendantsGone();

/// The targets of the process's descriptors, for a message.
std::string openDescriptors();

/// How many threads the idle process has, including that of a sanitizer.
int threadsAtRest();

/// Waits, for some seconds at most, until there are no more threads than `most`; returns how many
/// there are. A thread of the library without a job ends after two seconds.
int threadsAfterRest(int most);

} // namespace searchsystem
