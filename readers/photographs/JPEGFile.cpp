#include "readers/photographs/JPEGFile.h"

#include "readers/photographs/ByteNumbers.h"
#include "readers/photographs/CharacterSets.h"
#include "readers/photographs/ExtendedXMP.h"
#include "readers/photographs/PhotoshopResources.h"
#include "readers/photographs/TIFFBlock.h"
#include "readers/photographs/XMPPacket.h"

#include <optional>
#include <string>
#include <vector>

namespace searchsystem {

namespace {

constexpr unsigned char markerEnd = 0xD9;
constexpr unsigned char markerScan = 0xDA;
constexpr unsigned char markerApplication1 = 0xE1;
constexpr unsigned char markerApplication13 = 0xED;
constexpr unsigned char markerComment = 0xFE;

struct Segment {
  unsigned char marker;
  ByteRange content;
};

/// The segments before the image, one by one.
class Segments {
public:
  explicit Segments(const ByteRange &file) : file_(file) {}

  [[nodiscard]] std::optional<Segment> next() {
    // A marker may be preceded by any number of fill bytes (B.1.1.2).
    std::string_view header = file_.at(position_, 2);
    while (header == "\xFF\xFF")
      header = file_.at(++position_, 2);
    if (!header.starts_with('\xFF'))
      return std::nullopt;
    const auto marker = static_cast<unsigned char>(header[1]);
    if (marker == markerEnd || marker == markerScan || marker == 0)
      return std::nullopt;
    const std::uint64_t size = bigNumber(file_.at(position_ + 2, 2), 2);
    if (size < 2)
      return std::nullopt;
    const Segment segment{marker, file_.part(position_ + 4, size - 2)};
    position_ += 2 + size;
    return segment;
  }

private:
  const ByteRange file_;
  std::uint64_t position_ = 2;
};

/// Takes the segments of one file.
class SegmentReader {
public:
  explicit SegmentReader(PhotographReading &reading) : reading_(reading) {}

  void read(const Segment &segment) {
    const ByteRange &content = segment.content;
    if (segment.marker == markerApplication1) {
      readApplication1(content);
    } else if (segment.marker == markerApplication13) {
      if (beginsWith(content, photoshopMark))
        resources_.push_back(content.from(photoshopMark.size()));
    } else if (segment.marker == markerComment) {
      std::string comment = content.read(ReadBudget::longestText);
      comment.resize(comment.find_last_not_of('\0') + 1);
      reading_.fields.add("JPEG Comment", textOfUnknownSet(comment));
    }
  }

  void finish() {
    if (const std::string packet = extended_.packet(extensionName_); !packet.empty())
      readXMPPacket(packet, reading_, XMPPlace::file);
    if (resources_.size() == 1) {
      readPhotoshopResources(resources_.front(), reading_);
    } else if (resources_.size() > 1) {
      // One block may be divided between two segments.
      std::string all;
      for (const ByteRange &part : resources_)
        if (all.size() < ReadBudget::longestPacket)
          all += part.read(ReadBudget::longestText);
      FileWindows memory(all, reading_.budget);
      readPhotoshopResources(ByteRange(memory), reading_);
    }
  }

private:
  static constexpr std::string_view exifMark{"Exif\0", 5};
  static constexpr std::string_view xmpMark{"http://ns.adobe.com/xap/1.0/\0", 29};
  static constexpr std::string_view extendedMark{"http://ns.adobe.com/xmp/extension/\0", 35};
  static constexpr std::string_view photoshopMark{"Photoshop 3.0\0", 14};

  [[nodiscard]] static bool beginsWith(const ByteRange &content, std::string_view mark) {
    return content.at(0, mark.size()) == mark;
  }

  void readApplication1(const ByteRange &content) {
    // Behind its mark stands a byte that fills it up.
    if (beginsWith(content, exifMark)) {
      readTIFF(content.from(exifMark.size() + 1), reading_, TIFFUse::block);
    } else if (beginsWith(content, xmpMark)) {
      std::string name = readXMPPacket(content.from(xmpMark.size()).read(ReadBudget::longestPacket),
                                       reading_, XMPPlace::file);
      if (!name.empty())
        extensionName_ = std::move(name);
    } else if (beginsWith(content, extendedMark)) {
      extended_.add(content.from(extendedMark.size()));
    }
  }

  PhotographReading &reading_;
  std::vector<ByteRange> resources_;
  ExtendedXMP extended_;
  std::string extensionName_;
};

} // namespace

bool isJPEG(const ByteRange &range) { return range.at(0, 3) == "\xFF\xD8\xFF"; }

void readJPEG(const ByteRange &file, PhotographReading &reading) {
  const NestedBlock nested(reading);
  if (nested.isTooDeep())
    return;
  SegmentReader reader(reading);
  Segments segments(file);
  while (const auto segment = segments.next()) {
    if (!reading.budget.spendEntry())
      return;
    reader.read(*segment);
  }
  reader.finish();
}

} // namespace searchsystem
