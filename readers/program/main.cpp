// searchsystem-reader: reads documents and photographs for a process that searches. It is started
// by the library only; see readers/ReaderProtocol.h.

#include "readers/documents/DocumentText.h"
#include "readers/photographs/PhotographFields.h"
#include "readers/process/Starter.h"
#include "readers/program/CharacterMapFiles.h"

namespace searchsystem {

namespace {

class Reader final : public DocumentReader {
public:
  void prepare() override { maps_.open(); }

  UnreadReason read(ByteSource &document, TextSink &sink) override {
    return readDocumentText(document, maps_, sink);
  }

  UnreadReason readPhotograph(ByteSource &photograph, ByteSource *sidecar,
                              PhotographSink &sink) override {
    return searchsystem::readPhotograph(photograph, sidecar, sink);
  }

private:
  CharacterMapFiles maps_;
};

} // namespace

} // namespace searchsystem

int main() {
  searchsystem::Reader reader;
  searchsystem::serve(reader);
}
