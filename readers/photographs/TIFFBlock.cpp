#include "readers/photographs/TIFFBlock.h"

#include "readers/photographs/ExifTexts.h"
#include "readers/photographs/IPTCRecords.h"
#include "readers/photographs/JPEGFile.h"
#include "readers/photographs/PhotoshopResources.h"
#include "readers/photographs/TIFFDirectory.h"
#include "readers/photographs/XMPPacket.h"

#include <algorithm>
#include <deque>
#include <string_view>
#include <unordered_set>

namespace searchsystem {

namespace {

constexpr std::uint16_t tagRawJPEG = 0x002E;
constexpr std::uint16_t tagSubDirectories = 0x014A;
constexpr std::uint16_t tagXMP = 0x02BC;
constexpr std::uint16_t tagIPTC = 0x83BB;
constexpr std::uint16_t tagPhotoshop = 0x8649;
constexpr std::uint16_t tagExifDirectory = 0x8769;

constexpr std::string_view panasonicMark{"IIU\0", 4};

/// The directories of one structure, each read once, and what their entries lead to.
class TIFFReader {
public:
  TIFFReader(const ByteRange &block, const TIFFLayout &layout, PhotographReading &reading,
             TIFFUse use)
      : block_(block), layout_(layout), reading_(reading), use_(use) {}

  void read(std::uint64_t firstDirectory) {
    addDirectory(firstDirectory);
    while (!waiting_.empty() && reading_.budget.spendDirectory()) {
      const std::uint64_t offset = waiting_.front();
      waiting_.pop_front();
      readDirectory(offset);
    }
  }

private:
  void addDirectory(std::uint64_t offset) {
    if (offset != 0 && seen_.insert(offset).second)
      waiting_.push_back(offset);
  }

  void readDirectory(std::uint64_t offset) {
    TIFFDirectory directory(block_, layout_, offset);
    while (const auto entry = directory.next())
      readEntry(*entry);
    if (use_ == TIFFUse::file)
      addDirectory(directory.nextDirectory());
  }

  void readEntry(const TIFFEntry &entry) {
    switch (entry.tag) {
    case tagXMP:
      readXMPPacket(entry.value.read(ReadBudget::longestPacket), reading_, XMPPlace::file);
      return;
    case tagIPTC:
      return readIPTC(entry.value);
    case tagPhotoshop:
      return readPhotoshopResources(entry.value, reading_);
    case tagExifDirectory:
    case tagSubDirectories:
      return readPointers(entry);
    case tagRawJPEG:
      if (use_ == TIFFUse::file && block_.at(0, 4) == panasonicMark && isJPEG(entry.value))
        readJPEG(entry.value, reading_);
      return;
    default:
      return readExifText(entry, layout_.order, reading_.fields);
    }
  }

  void readPointers(const TIFFEntry &entry) {
    constexpr std::uint64_t most = 64;
    if (entry.tag == tagSubDirectories && use_ != TIFFUse::file)
      return;
    const std::uint64_t count = std::min(most, entry.value.size() / entry.unitSize);
    if (entry.unitSize < 4)
      return;
    for (std::uint64_t i = 0; i < count; ++i)
      addDirectory(numberOf(entry.value.at(i * entry.unitSize, entry.unitSize), entry.unitSize,
                            layout_.order));
  }

  void readIPTC(const ByteRange &value) {
    std::string records = value.read(ReadBudget::longestPacket);
    // Some writers take it for numbers, and change the order of their bytes.
    if (records.size() >= 4 && records[0] != iptcMark && records[3] == iptcMark)
      for (std::size_t i = 0; i + 4 <= records.size(); i += 4)
        std::reverse(records.begin() + static_cast<std::ptrdiff_t>(i),
                     records.begin() + static_cast<std::ptrdiff_t>(i + 4));
    readIPTCRecords(records, reading_.fields);
  }

  const ByteRange block_;
  const TIFFLayout layout_;
  PhotographReading &reading_;
  const TIFFUse use_;
  std::deque<std::uint64_t> waiting_;
  std::unordered_set<std::uint64_t> seen_;
};

struct Header {
  TIFFLayout layout;
  std::uint64_t firstDirectory;
};

std::optional<Header> headerOf(const ByteRange &range, TIFFUse use) {
  const std::string_view beginning = range.at(0, 8);
  const bool isLittle = beginning.starts_with("II");
  if (!isLittle && !beginning.starts_with("MM"))
    return std::nullopt;
  Header header{{isLittle ? std::endian::little : std::endian::big, false}, 0};
  const std::endian order = header.layout.order;
  const std::uint64_t mark = numberOf(beginning.substr(2), 2, order);
  constexpr std::uint64_t classic = 42;
  constexpr std::uint64_t big = 43;
  constexpr std::uint64_t panasonic = 0x55;
  constexpr std::uint64_t olympus = 0x4F52;
  constexpr std::uint64_t olympusToo = 0x5352;
  if (mark == classic ||
      (use == TIFFUse::file && (mark == panasonic || mark == olympus || mark == olympusToo))) {
    header.firstDirectory = numberOf(beginning.substr(4), 4, order);
    return header;
  }
  if (mark != big || numberOf(beginning.substr(4), 2, order) != 8)
    return std::nullopt;
  header.layout.isBig = true;
  header.firstDirectory = numberOf(range.at(8, 8), 8, order);
  return header;
}

} // namespace

bool isTIFF(const ByteRange &range) { return headerOf(range, TIFFUse::file).has_value(); }

void readTIFF(const ByteRange &block, PhotographReading &reading, TIFFUse use) {
  const NestedBlock nested(reading);
  if (nested.isTooDeep())
    return;
  if (const auto header = headerOf(block, use))
    TIFFReader(block, header->layout, reading, use).read(header->firstDirectory);
}

void readExifBlock(const ByteRange &block, PhotographReading &reading) {
  constexpr std::string_view segmentMark{"Exif\0\0", 6};
  const bool isMarked = block.at(0, segmentMark.size()) == segmentMark;
  readTIFF(isMarked ? block.from(segmentMark.size()) : block, reading, TIFFUse::block);
}

void readOffsetExif(const ByteRange &data, PhotographReading &reading) {
  readExifBlock(data.from(4 + bigNumber(data.at(0, 4), 4)), reading);
}

} // namespace searchsystem
