#include "readers/photographs/PhotoshopResources.h"

#include "readers/photographs/ByteNumbers.h"
#include "readers/photographs/IPTCRecords.h"
#include "readers/photographs/TIFFBlock.h"
#include "readers/photographs/XMPPacket.h"

#include <cstdint>

namespace searchsystem {

namespace {

constexpr std::uint64_t headerSize = 26;
constexpr std::uint64_t resourceIPTC = 1028;
constexpr std::uint64_t resourceExif = 1058;
constexpr std::uint64_t resourceXMP = 1060;

bool isResourceMark(std::string_view mark) noexcept {
  return mark == "8BIM" || mark == "MeSa" || mark == "AgHg" || mark == "PHUT" || mark == "DCSR";
}

constexpr std::uint64_t evened(std::uint64_t size) noexcept { return size + size % 2; }

void readResource(std::uint64_t identifier, const ByteRange &data, PhotographReading &reading) {
  if (identifier == resourceIPTC)
    readIPTCRecords(data.read(ReadBudget::longestPacket), reading.fields);
  else if (identifier == resourceExif)
    readExifBlock(data, reading);
  else if (identifier == resourceXMP)
    readXMPPacket(data.read(ReadBudget::longestPacket), reading, XMPPlace::file);
}

} // namespace

bool isPhotoshopFile(const ByteRange &range) {
  const std::uint64_t version = bigNumber(range.at(4, 2), 2);
  return range.at(0, 4) == "8BPS" && (version == 1 || version == 2);
}

void readPhotoshopFile(const ByteRange &file, PhotographReading &reading) {
  const std::uint64_t colorSize = bigNumber(file.at(headerSize, 4), 4);
  const std::uint64_t sizeAt = headerSize + 4 + colorSize;
  const std::uint64_t size = bigNumber(file.at(sizeAt, 4), 4);
  readPhotoshopResources(file.part(sizeAt + 4, size), reading);
}

void readPhotoshopResources(const ByteRange &resources, PhotographReading &reading) {
  const NestedBlock nested(reading);
  if (nested.isTooDeep())
    return;
  // Mark, identifier, the name with its length, the size of the data.
  for (std::uint64_t at = 0; reading.budget.spendEntry();) {
    const std::string_view header = resources.at(at, 7);
    if (header.empty() || !isResourceMark(header.substr(0, 4)))
      return;
    const std::uint64_t identifier = bigNumber(header.substr(4), 2);
    const std::uint64_t sizeAt = at + 6 + evened(1 + bigNumber(header.substr(6), 1));
    const std::string_view sizeBytes = resources.at(sizeAt, 4);
    if (sizeBytes.empty())
      return;
    const std::uint64_t size = bigNumber(sizeBytes, 4);
    readResource(identifier, resources.part(sizeAt + 4, size), reading);
    at = sizeAt + 4 + evened(size);
  }
}

} // namespace searchsystem
