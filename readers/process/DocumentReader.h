#pragma once

#include "readers/ByteSource.h"
#include "readers/ReadResult.h"
#include "readers/documents/TextSink.h"
#include "readers/photographs/PhotographSink.h"

namespace searchsystem {

/// What a reader program does with documents and photographs. Their bytes are hostile.
class DocumentReader {
public:
  DocumentReader() = default;
  DocumentReader(const DocumentReader &) = delete;
  DocumentReader &operator=(const DocumentReader &) = delete;
  virtual ~DocumentReader() = default;

  /// Called before any worker is made, once. What it opens, all workers have, and nothing else.
  virtual void prepare() {}

  /// Gives the text of `document`, as `ReaderRecord::text` wants it, to `sink`. Called once in a
  /// sealed process: nothing can be opened, and a call to the system that is not allowed ends the
  /// process. What throws `std::bad_alloc` counts as too large.
  virtual UnreadReason read(ByteSource &document, TextSink &sink) = 0;

  /// Gives the fields of a photograph to `sink`. `sidecar`, a file beside it, may be null. Called
  /// for one photograph after another in a sealed process.
  virtual UnreadReason readPhotograph(ByteSource &photograph, ByteSource *sidecar,
                                      PhotographSink &sink) = 0;
};

} // namespace searchsystem
