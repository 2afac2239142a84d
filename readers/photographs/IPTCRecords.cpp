#include "readers/photographs/IPTCRecords.h"

#include "readers/photographs/ByteNumbers.h"
#include "readers/photographs/CharacterSets.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace searchsystem {

namespace {

struct DataSet {
  /// Record and number.
  std::uint16_t number;
  std::string_view value;
};

/// Takes the first data set; none where there is no further one.
std::optional<DataSet> takeDataSet(std::string_view &records) noexcept {
  constexpr std::size_t headerSize = 5;
  constexpr std::uint64_t extended = 0x8000;
  if (records.size() < headerSize || records[0] != iptcMark)
    return std::nullopt;
  const auto number = static_cast<std::uint16_t>(bigNumber(records.substr(1), 2));
  std::uint64_t size = bigNumber(records.substr(3), 2);
  records.remove_prefix(headerSize);
  if ((size & extended) != 0) {
    const std::size_t sizeOfSize = size & ~extended;
    if (sizeOfSize > 8 || sizeOfSize > records.size())
      return std::nullopt;
    size = bigNumber(records, sizeOfSize);
    records.remove_prefix(sizeOfSize);
  }
  if (size > records.size())
    return std::nullopt;
  const DataSet dataSet{number, records.substr(0, size)};
  records.remove_prefix(size);
  return dataSet;
}

constexpr std::uint16_t numberOfSet(unsigned record, unsigned dataSet) noexcept {
  return static_cast<std::uint16_t>(record << 8 | dataSet);
}

std::string_view nameOf(std::uint16_t number) noexcept {
  switch (number) {
  case numberOfSet(2, 5):
    return "IPTC ObjectName";
  case numberOfSet(2, 25):
    return "IPTC Keywords";
  case numberOfSet(2, 80):
    return "IPTC By-line";
  case numberOfSet(2, 90):
    return "IPTC City";
  case numberOfSet(2, 101):
    return "IPTC Country";
  case numberOfSet(2, 105):
    return "IPTC Headline";
  case numberOfSet(2, 120):
    return "IPTC Caption";
  default:
    return {};
  }
}

} // namespace

void readIPTCRecords(std::string_view records, FieldCollector &fields) {
  std::string_view characterSet;
  std::string date;
  std::string_view time;
  while (const auto dataSet = takeDataSet(records)) {
    const std::string_view value = dataSet->value;
    switch (dataSet->number) {
    case numberOfSet(1, 90):
      characterSet = value;
      continue;
    case numberOfSet(2, 55):
      date = value;
      continue;
    case numberOfSet(2, 60):
      time = value;
      continue;
    default:
      break;
    }
    if (const std::string_view name = nameOf(dataSet->number); !name.empty())
      fields.add(name, textOfAnnouncedSet(untilNul(value), characterSet));
  }
  if (!date.empty())
    fields.addDate(DateSource::iptcCreated, parsePhotographDate(date.append(" ").append(time)));
}

} // namespace searchsystem
