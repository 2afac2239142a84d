#pragma once

#include "readers/photographs/ByteRange.h"

#include <cstdint>
#include <optional>
#include <string>

namespace searchsystem {

struct Box {
  std::string type;
  ByteRange content;
};

/// The boxes in a range, one behind the other (ISO/IEC 14496-12, 4.2.2).
class Boxes {
public:
  explicit Boxes(const ByteRange &range) noexcept : range_(range) {}

  /// None behind the last one, and where a size lies.
  [[nodiscard]] std::optional<Box> next();

private:
  const ByteRange range_;
  std::uint64_t position_ = 0;
  std::uint64_t passed_ = 0;
};

} // namespace searchsystem
