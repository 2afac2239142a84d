#include "pdf_reader/CParamArray.h"
#include "pdf_reader/LineUtility.h"

#include <string_view>

namespace searchsystem {

int GetArrayLength(const CParamArray *tokens, int index) noexcept {
  if (tokens == nullptr || index < 0)
    return 0;
  const auto first = static_cast<unsigned long>(index);
  const unsigned long count = tokens->GetCount();
  if (first >= count || first + 2 > count || tokens->token(first) != "[")
    return 0;
  unsigned long depth = 1;
  for (unsigned long i = first + 1; i < count; ++i) {
    const std::string_view token = tokens->token(i);
    if (token == "[")
      ++depth;
    else if (token == "]" && --depth == 0)
      return static_cast<int>(i - first + 1);
  }
  return 0;
}

} // namespace searchsystem
