#pragma once

#include <cstdint>

namespace searchsystem {

/// A reference to an indirect object of a document.
struct tagOBJECTRECORD {
  std::int32_t number = 0;
  std::uint16_t generation = 0;
  /// The letter that stood with it: R of a reference, n or f of a table entry.
  std::uint8_t flag = 0;
};

} // namespace searchsystem
