#pragma once

#include <string>

/// What the process holds of the machine.
struct Holdings {
  int descriptors = 0;
  int threads = 0;
  /// Resident memory, and what of it has been allocated and not freed; in KiB.
  long resident = 0;
  long allocated = 0;

  static Holdings now();
};

/// What the process's descriptors lead to, for a message.
std::string openDescriptors();

/// How many threads the process has when it does nothing, that of a sanitizer included.
int threadsAtRest();

/// Waits, for some seconds at most, until there are no more threads than `most`; how many there
/// are. A thread of the library without a job ends after two seconds.
int threadsAfterRest(int most);
