#include "platform/imagetag/JPEGSegments.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr unsigned char startOfScan = 0xDA;
constexpr unsigned char endOfImage = 0xD9;
constexpr unsigned char application1 = 0xE1;

/// Whether no length follows: a stuffed zero, TEM, the restarts, the start of an image.
bool isAlone(unsigned char marker) noexcept {
  return marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

} // namespace

std::optional<JPEGSegments::Segment> JPEGSegments::nextSegment() noexcept {
  for (;;) {
    const std::size_t fill = rest_.find('\xFF');
    const std::size_t code = rest_.find_first_not_of('\xFF', fill);
    if (fill == std::string_view::npos || code == std::string_view::npos)
      return std::nullopt;
    const auto marker = static_cast<unsigned char>(rest_[code]);
    rest_.remove_prefix(code + 1);
    if (isAlone(marker))
      continue;
    if (marker == startOfScan || marker == endOfImage || rest_.size() < 2)
      return std::nullopt;
    const std::size_t length = static_cast<std::size_t>(static_cast<unsigned char>(rest_[0])) << 8 |
                               static_cast<unsigned char>(rest_[1]);
    // The length counts itself.
    if (length < 2)
      return std::nullopt;
    const std::size_t present = std::min(length, rest_.size());
    const Segment segment{marker, rest_.substr(2, present - 2)};
    rest_.remove_prefix(present);
    return segment;
  }
}

std::optional<std::string_view> JPEGSegments::nextExif() noexcept {
  // A zero follows that some cameras fill with something else.
  constexpr std::string_view name("Exif\0", 5);
  while (const std::optional<Segment> segment = nextSegment())
    if (segment->marker == application1 && segment->content.starts_with(name) &&
        segment->content.size() > name.size())
      return segment->content.substr(name.size() + 1);
  return std::nullopt;
}
