#pragma once

#include "pdf_reader/CParamArray.h"

#include <string>
#include <string_view>

namespace searchsystem {

/// The tokens of an array with a bar between them.
inline std::string joined(const CParamArray &tokens) {
  std::string text;
  for (unsigned long i = 0; i < tokens.GetCount(); ++i)
    text += (i > 0 ? "|" : "") + std::string(tokens.token(i));
  return text;
}

/// Fills an array with the tokens of a line.
inline void fill(CParamArray &tokens, std::string_view line) {
  tokens.Parse(line.data(), line.size());
}

} // namespace searchsystem
