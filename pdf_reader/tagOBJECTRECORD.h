#pragma once

#include "pdf_reader/CParamArray.h"
#include "pdf_reader/TokenNumber.h"

#include <cstdint>

namespace searchsystem {

/// A reference to an indirect object of a document.
struct tagOBJECTRECORD {
  std::int32_t number = 0;
  std::uint16_t generation = 0;
  /// The first letter of the third token: R in a sound document.
  std::uint8_t flag = 0;
};

/// The reference in the three tokens from `index` on, as `7 0 R`; they must exist.
[[nodiscard]] inline tagOBJECTRECORD referenceAt(const CParamArray &tokens,
                                                 unsigned long index) noexcept {
  const std::string_view letter = tokens.token(index + 2);
  return {numberOf(tokens.token(index)), generationOf(tokens.token(index + 1)),
          letter.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(letter[0])};
}

} // namespace searchsystem
