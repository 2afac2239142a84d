#include "readers/photographs/RAFFile.h"

#include "readers/photographs/ByteNumbers.h"
#include "readers/photographs/JPEGFile.h"

namespace searchsystem {

bool isRAF(const ByteRange &range) {
  constexpr std::string_view mark = "FUJIFILMCCD-RAW ";
  return range.at(0, mark.size()) == mark;
}

void readRAF(const ByteRange &file, PhotographReading &reading) {
  constexpr std::uint64_t placeOfJPEG = 84;
  const std::uint64_t offset = bigNumber(file.at(placeOfJPEG, 4), 4);
  const std::uint64_t size = bigNumber(file.at(placeOfJPEG + 4, 4), 4);
  const ByteRange jpeg = file.part(offset, size);
  if (isJPEG(jpeg))
    readJPEG(jpeg, reading);
}

} // namespace searchsystem
