#pragma once

#include "readers/process/DocumentReader.h"

namespace searchsystem {

/// The life of a reader program. It waits for requests on the descriptors that `ReaderProtocol.h`
/// names and makes a worker for each, which reads one document with `reader`. It looks at no byte
/// of a document itself.
///
/// Returns when nobody needs it any
/// more: its socket has been closed, the process that it serves is gone, or there has been no work
/// for a while. Its workers die with it. The process must have no other thread.
void serve(DocumentReader &reader) noexcept;

} // namespace searchsystem
