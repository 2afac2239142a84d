#pragma once

#include <cstddef>

namespace searchsystem {

/// A range of bytes of a string's UTF-8 text. A search that finds nothing gives length 0.
struct NSRange {
  std::size_t location = 0;
  std::size_t length = 0;
};

/// Options of a search for a range, to be combined with "or".
enum NSStringCompareOptions : unsigned {
  NSCaseInsensitiveSearch = 1,
  NSLiteralSearch = 2,
};

} // namespace searchsystem
