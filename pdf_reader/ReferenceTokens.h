#pragma once

#include "pdf_reader/CParamArray.h"
#include "pdf_reader/TokenNumber.h"
#include "pdf_reader/tagOBJECTRECORD.h"

namespace searchsystem {

/// The reference whose three tokens begin at `index`, as `7 0 R`; they have to be there.
[[nodiscard]] inline tagOBJECTRECORD referenceAt(const CParamArray &tokens,
                                                 unsigned long index) noexcept {
  return {numberOf(tokens.token(index)), generationOf(tokens.token(index + 1)),
          letterOf(tokens.token(index + 2))};
}

} // namespace searchsystem
