#include "readers/photographs/CIFFFile.h"

#include "readers/photographs/ByteNumbers.h"
#include "readers/photographs/CharacterSets.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <string>

namespace searchsystem {

namespace {

/// By the camera's clock, as seconds from 1970 on.
PhotographDate dateOf(std::uint64_t seconds) {
  using namespace std::chrono;
  const sys_seconds time{std::chrono::seconds(seconds)};
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(clock.hours().count()),
          static_cast<int>(clock.minutes().count()),
          static_cast<int>(clock.seconds().count())};
}

/// A heap is data, then a directory of them, then the place of that; some data are heaps.
class HeapReader {
public:
  HeapReader(std::endian order, PhotographReading &reading) : order_(order), reading_(reading) {}

  void read(const ByteRange &heap) {
    const NestedBlock nested(reading_);
    if (nested.isTooDeep() || heap.size() < 4 || !reading_.budget.spendDirectory())
      return;
    const ByteRange directory = heap.from(number(heap, heap.size() - 4, 4));
    constexpr std::uint64_t entrySize = 10;
    const std::uint64_t count = std::min(number(directory, 0, 2), directory.size() / entrySize);
    for (std::uint64_t i = 0; i < count && reading_.budget.spendEntry(); ++i)
      readEntry(directory.from(2 + i * entrySize), heap);
  }

private:
  [[nodiscard]] std::uint64_t number(const ByteRange &range, std::uint64_t at,
                                     std::size_t size) const {
    return numberOf(range.at(at, size), size, order_);
  }

  void readEntry(const ByteRange &entry, const ByteRange &heap) {
    const std::uint64_t tag = number(entry, 0, 2);
    constexpr std::uint64_t placeMask = 0xC000;
    constexpr std::uint64_t inEntry = 0x4000;
    constexpr std::uint64_t kindMask = 0x3800;
    const ByteRange value = (tag & placeMask) == inEntry
                                ? entry.part(2, 8)
                                : heap.part(number(entry, 6, 4), number(entry, 2, 4));
    if (const std::uint64_t kind = tag & kindMask; kind == 0x2800 || kind == 0x3000)
      return read(value);
    switch (tag & ~placeMask) {
    case 0x0805:
      return reading_.fields.add("CIFF Description", textAt(value, 0));
    case 0x080A: {
      const std::string maker = textAt(value, 0);
      reading_.fields.add("CIFF Make", maker, FieldRole::maker);
      reading_.fields.add("CIFF Model", textAt(value, maker.size() + 1), FieldRole::model);
      return;
    }
    case 0x180E:
      if (const std::uint64_t seconds = number(value, 0, 4); seconds != 0)
        reading_.fields.addDate(DateSource::exifOriginal, dateOf(seconds));
      return;
    default:
      return;
    }
  }

  [[nodiscard]] static std::string textAt(const ByteRange &value, std::uint64_t at) {
    return textOfUnknownSet(untilNul(value.from(at).read(ReadBudget::longestText)));
  }

  const std::endian order_;
  PhotographReading &reading_;
};

} // namespace

bool isCIFF(const ByteRange &range) { return range.at(6, 8) == "HEAPCCDR"; }

void readCIFF(const ByteRange &file, PhotographReading &reading) {
  const std::endian order = file.at(0, 2) == "MM" ? std::endian::big : std::endian::little;
  HeapReader(order, reading).read(file.from(numberOf(file.at(2, 4), 4, order)));
}

} // namespace searchsystem
