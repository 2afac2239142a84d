#pragma once

#include "readers/photographs/ByteRange.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// The packet that a JPEG file divides between segments where it is too long for one (XMP standard,
/// part 3, 1.1.3.1).
class ExtendedXMP {
public:
  /// Notes a segment, behind its mark: the packet's name, its size, where the part belongs, the
  /// part.
  void add(const ByteRange &segment);
  /// The packet of this name as far as its parts follow one another.
  [[nodiscard]] std::string packet(std::string_view name) const;

private:
  static constexpr std::size_t nameSize = 32;

  struct Part {
    std::string name;
    std::uint64_t offset;
    ByteRange bytes;
  };
  std::vector<Part> parts_;
};

} // namespace searchsystem
