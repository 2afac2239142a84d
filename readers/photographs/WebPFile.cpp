#include "readers/photographs/WebPFile.h"

#include "readers/photographs/ByteNumbers.h"
#include "readers/photographs/TIFFBlock.h"
#include "readers/photographs/XMPPacket.h"

namespace searchsystem {

bool isWebP(const ByteRange &range) { return range.at(0, 4) == "RIFF" && range.at(8, 4) == "WEBP"; }

void readWebP(const ByteRange &file, PhotographReading &reading) {
  constexpr std::uint64_t fileHeaderSize = 12;
  std::uint64_t size = 0;
  for (std::uint64_t at = fileHeaderSize;; at += size + size % 2) {
    const std::string_view header = file.headerBehind(size, at, 8);
    if (header.empty())
      return;
    const bool isExif = header.starts_with("EXIF");
    const bool isXMP = header.starts_with("XMP ");
    size = littleNumber(header.substr(4), 4);
    at += header.size();
    const ByteRange data = file.part(at, size);
    if (isExif)
      readExifBlock(data, reading);
    else if (isXMP)
      readXMPPacket(data.read(ReadBudget::longestPacket), reading, XMPPlace::file);
  }
}

} // namespace searchsystem
