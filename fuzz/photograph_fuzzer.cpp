// Reads them as a photograph, whose container the first byte may choose. The texts have to be in
// the form that is promised, and the date one that exists.

#include "readers/photographs/PhotographFields.h"
#include "readers/photographs/ReadBudget.h"
#include "testing/PhotographContainers.h"

#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace searchsystem;

void check(bool isSo) {
  if (!isSo)
    std::abort();
}

/// UTF-8 without controls, with single blanks.
void checkText(std::string_view text) {
  int missing = 0;
  bool wasBlank = true;
  check(!text.empty() && text.back() != ' ');
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool continues = (byte & 0xC0) == 0x80;
    check(continues == (missing > 0) && byte <= 0xF4);
    missing = continues ? missing - 1 : byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : byte >= 0xC0 ? 1 : 0;
    check(byte >= 0x20 || c == '\x01');
    check(c != ' ' || !wasBlank);
    wasBlank = c == ' ';
  }
  check(missing == 0);
}

class CheckingSink final : public PhotographSink {
public:
  bool takeField(std::string_view name, std::string_view text) override {
    check(known_.insert(std::string(name) + '\0' + std::string(text)).second);
    checkText(text);
    return true;
  }
  void takeDate(const PhotographDate &date) override {
    check(date.year >= 1 && date.year <= 9999 && date.month >= 1 && date.month <= 12);
    check(date.day >= 1 && date.day <= 31 && date.hour >= 0 && date.hour <= 23);
    check(date.minute >= 0 && date.minute <= 59 && date.second >= 0 && date.second <= 59);
  }
  void takeCamera(std::string_view maker, std::string_view model) override {
    check(!maker.empty() || !model.empty());
  }

private:
  std::set<std::string> known_;
};

/// The bytes as a part of a file that is otherwise sound.
std::string fileOf(unsigned char container, std::string bytes) {
  switch (container % 10) {
  case 1:
    return jpegFile({jpegSegment(0xE1, std::string("Exif\0\0", 6) + bytes.substr(0, 60000))});
  case 2:
    return photoshopFile(bytes);
  case 3:
    return photoshopFile(photoshopResource(1028, bytes));
  case 4:
    return webpFile(riffChunk("XMP ", bytes));
  case 5:
    return heifFile({{2, "Exif", bytes}, {3, "mime", std::move(bytes), true}});
  case 6:
    return pngFile({pngChunk("iTXt", bytes), pngChunk("zTXt", bytes), pngChunk("tEXt", bytes)});
  case 7:
    return crwFile(bytes);
  case 8:
    return jpegXLFile(bytes);
  case 9:
    return photoshopFile(photoshopResource(1058, PhotoTags(ByteOrder::Big)
                                                     .comment("JIS", bytes)
                                                     .text(0, 0x010E, bytes)
                                                     .taken(bytes)
                                                     .tiff()));
  default:
    return bytes;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0)
    return 0;
  const std::string file =
      fileOf(data[0], std::string(reinterpret_cast<const char *>(data + 1), size - 1));
  MemorySource source(file);
  // In some the sidecar is the same bytes.
  MemorySource beside(std::string_view(file).substr(0, data[0] < 128 ? 0 : file.size()));
  CheckingSink sink;
  const UnreadReason reason = readPhotograph(source, data[0] < 128 ? nullptr : &beside, sink);
  check(reason == UnreadReason::none || reason == UnreadReason::damaged ||
        reason == UnreadReason::tooLarge);
  return 0;
}
