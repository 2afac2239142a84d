#include "readers/documents/DocumentText.h"

#include "readers/documents/ContentInterpreter.h"
#include "readers/documents/Document.h"
#include "readers/documents/TextOutput.h"

#include <memory>
#include <variant>

namespace searchsystem {

UnreadReason readDocumentText(ByteSource &source, const CharacterMaps &maps, TextSink &sink) {
  auto opened = Document::open(source);
  if (const auto *const reason = std::get_if<UnreadReason>(&opened))
    return *reason;
  Document &document = *std::get<std::unique_ptr<Document>>(opened);
  TextOutput output(sink);
  ContentInterpreter interpreter(document, maps, output);
  const auto isTooLarge = [&] {
    return output.isTooLarge() || interpreter.hasMetLimit() || document.hasMetLimit();
  };
  bool hasPages = false;
  document.forEachPage([&](const Page &page) {
    hasPages = true;
    interpreter.readPage(page);
    return !output.isStopped() && !isTooLarge();
  });
  output.finish();
  return isTooLarge()                             ? UnreadReason::tooLarge
         : output.isStopped() || output.hasText() ? UnreadReason::none
         : hasPages                               ? UnreadReason::noText
                                                  : UnreadReason::damaged;
}

} // namespace searchsystem
