#include "platform/imagetag/JPEGSegments.h"

#include <cstddef>
#include <string_view>

namespace searchsystem {

namespace {

constexpr char fill = '\xFF';
constexpr unsigned char startOfScan = 0xDA;
constexpr unsigned char endOfImage = 0xD9;
constexpr unsigned char application1 = 0xE1;

/// Whether the marker has no length: a stuffed zero, TEM, the restarts, the start of an image.
bool isAlone(unsigned char marker) noexcept {
  return marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

} // namespace

bool JPEGSegments::skipTo(bool isFill) noexcept {
  for (;;) {
    const std::string_view run = bytes_.run(place_);
    const std::size_t found = isFill ? run.find(fill) : run.find_first_not_of(fill);
    if (found != std::string_view::npos) {
      place_ += found;
      return true;
    }
    if (run.empty())
      return false;
    place_ += run.size();
  }
}

std::optional<ImageBytes> JPEGSegments::nextExif() noexcept {
  // A padding byte follows, which some cameras do not set to zero.
  constexpr std::string_view name("Exif\0", 5);
  constexpr std::size_t nameSize = name.size() + 1;
  while (skipTo(true) && skipTo(false)) {
    const auto marker = static_cast<unsigned char>(bytes_.run(place_).front());
    ++place_;
    if (isAlone(marker))
      continue;
    const std::string_view size = bytes_.part(place_, 2);
    if (marker == startOfScan || marker == endOfImage || size.size() < 2)
      break;
    const std::size_t length = static_cast<std::size_t>(static_cast<unsigned char>(size[0])) << 8 |
                               static_cast<unsigned char>(size[1]);
    // The length counts itself.
    if (length < 2)
      break;
    const ImageBytes content = bytes_.range(place_ + 2, length - 2);
    place_ += length;
    if (marker == application1 && content.size() >= nameSize &&
        content.part(0, nameSize).starts_with(name))
      return content.range(nameSize, content.size());
  }
  return std::nullopt;
}

} // namespace searchsystem
