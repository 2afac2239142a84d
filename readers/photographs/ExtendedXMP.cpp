#include "readers/photographs/ExtendedXMP.h"

#include "readers/photographs/ByteNumbers.h"

#include <algorithm>

namespace searchsystem {

void ExtendedXMP::add(const ByteRange &segment) {
  constexpr std::size_t headerSize = nameSize + 8;
  const std::string_view header = segment.at(0, headerSize);
  if (!header.empty())
    parts_.push_back({std::string(header.substr(0, nameSize)),
                      bigNumber(header.substr(nameSize + 4), 4), segment.from(headerSize)});
}

std::string ExtendedXMP::packet(std::string_view name) const {
  std::vector<const Part *> parts;
  for (const Part &part : parts_)
    if (part.name == name)
      parts.push_back(&part);
  std::stable_sort(parts.begin(), parts.end(),
                   [](const Part *a, const Part *b) { return a->offset < b->offset; });
  std::string packet;
  for (const Part *const part : parts)
    if (part->offset == packet.size() && packet.size() < ReadBudget::longestPacket)
      packet += part->bytes.read(ReadBudget::longestPacket);
  return packet;
}

} // namespace searchsystem
