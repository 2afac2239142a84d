// searchsystem-reader: reads documents for a process that searches. It is started by the library
// only; see readers/ReaderProtocol.h.

#include "readers/documents/DocumentText.h"
#include "readers/process/Starter.h"
#include "readers/program/CharacterMapFiles.h"

namespace searchsystem {

namespace {

class PDFReader final : public DocumentReader {
public:
  void prepare() override { maps_.open(); }

  UnreadReason read(ByteSource &document, TextSink &sink) override {
    return readDocumentText(document, maps_, sink);
  }

private:
  CharacterMapFiles maps_;
};

} // namespace

} // namespace searchsystem

int main() {
  searchsystem::PDFReader reader;
  searchsystem::serve(reader);
}
