#include "readers/photographs/PhotographFields.h"

#include "readers/photographs/BoxFile.h"
#include "readers/photographs/ByteRange.h"
#include "readers/photographs/CIFFFile.h"
#include "readers/photographs/JPEGFile.h"
#include "readers/photographs/PNGFile.h"
#include "readers/photographs/PhotographReading.h"
#include "readers/photographs/PhotoshopResources.h"
#include "readers/photographs/RAFFile.h"
#include "readers/photographs/TIFFBlock.h"
#include "readers/photographs/WebPFile.h"
#include "readers/photographs/XMPPacket.h"

namespace searchsystem {

namespace {

void readTIFFFile(const ByteRange &file, PhotographReading &reading) {
  readTIFF(file, reading, TIFFUse::file);
}

/// Without a container it holds no descriptions.
bool isBareJPEGXL(const ByteRange &range) { return range.at(0, 2) == "\xFF\x0A"; }
void readNothing(const ByteRange &, PhotographReading &) {}

struct Container {
  bool (*isOne)(const ByteRange &);
  void (*read)(const ByteRange &, PhotographReading &);
};

/// A CRW file begins as TIFF files do, but for its mark.
constexpr Container containers[] = {
    {isJPEG, readJPEG},
    {isTIFF, readTIFFFile},
    {isCIFF, readCIFF},
    {isPNG, readPNG},
    {isBoxFile, readBoxFile},
    {isWebP, readWebP},
    {isRAF, readRAF},
    {isPhotoshopFile, readPhotoshopFile},
    {isBareJPEGXL, readNothing},
};

/// False if it is no photograph.
bool readContainer(const ByteRange &file, PhotographReading &reading) {
  for (const Container &container : containers) {
    if (container.isOne(file)) {
      container.read(file, reading);
      return true;
    }
  }
  return false;
}

} // namespace

UnreadReason readPhotograph(ByteSource &source, ByteSource *sidecar, PhotographSink &sink) {
  PhotographReading reading(sink);
  FileWindows file(source, reading.budget);
  const bool isPhotograph = readContainer(ByteRange(file), reading);
  if (sidecar != nullptr) {
    FileWindows beside(*sidecar, reading.budget);
    readXMPPacket(beside.read(0, ReadBudget::longestPacket), reading, XMPPlace::sidecar);
  }
  reading.fields.finish();
  if (reading.fields.isStopped())
    return UnreadReason::none;
  return reading.budget.isSpent() ? UnreadReason::tooLarge
         : isPhotograph           ? UnreadReason::none
                                  : UnreadReason::damaged;
}

} // namespace searchsystem
