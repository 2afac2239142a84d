#pragma once

#include "readers/ReaderProtocol.h"
#include "readers/process/DocumentReader.h"
#include "readers/process/Seal.h"

#include <sys/types.h>

namespace searchsystem {

/// What a worker is made of. `document` is -1 for photographs.
struct WorkerParts {
  DocumentReader &reader;
  const Seal &seal;
  ReaderLimits limits;
  int socket;
  int document;
  /// Descriptors from this one on belong to others.
  int firstForeignDescriptor;
  pid_t starter;
};

/// The life of a worker: gives up all but what it needs, reads the document, or one photograph
/// after another, answers, ends.
[[noreturn]] void work(const WorkerParts &parts) noexcept;

} // namespace searchsystem
