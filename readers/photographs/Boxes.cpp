#include "readers/photographs/Boxes.h"

#include "readers/photographs/ByteNumbers.h"

#include <string_view>

namespace searchsystem {

std::optional<Box> Boxes::next() {
  if (position_ >= range_.size() || !range_.budget().spendEntry())
    return std::nullopt;
  const std::string_view header = range_.headerBehind(passed_, position_, 8);
  if (header.empty())
    return std::nullopt;
  std::uint64_t size = bigNumber(header, 4);
  std::string type(header.substr(4));
  std::uint64_t headerSize = header.size();
  if (size == 1) {
    size = bigNumber(range_.at(position_ + headerSize, 8), 8);
    headerSize += 8;
  } else if (size == 0) {
    size = range_.size() - position_;
  }
  if (size < headerSize)
    return std::nullopt;
  const ByteRange content = range_.from(position_).part(headerSize, size - headerSize);
  // A size beyond the end leads there.
  passed_ = headerSize + content.size();
  position_ += passed_;
  return Box{std::move(type), content};
}

} // namespace searchsystem
