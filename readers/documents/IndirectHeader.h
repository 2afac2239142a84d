#pragma once

#include "readers/documents/Object.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace searchsystem {

/// `12 0 obj`, in front of an object of the file (ISO 32000-2, 7.3.10).
struct IndirectHeader {
  Reference reference;
  /// How many bytes it takes, with white space in front.
  std::size_t size = 0;

  /// At the beginning of the bytes, or behind white space.
  [[nodiscard]] static std::optional<IndirectHeader> at(std::string_view bytes) noexcept;
  /// The one that ends with the word `obj` at `place`; `size` goes from its number on.
  [[nodiscard]] static std::optional<IndirectHeader> endingAt(std::string_view bytes,
                                                              std::size_t place) noexcept;
};

} // namespace searchsystem
