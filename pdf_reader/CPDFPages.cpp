#include "pdf_reader/CPDFPages.h"

#include "pdf_reader/ReferenceValues.h"
#include "pdf_reader/TokenNumber.h"
#include "pdf_reader/ZeroWithoutMemory.h"

namespace searchsystem {

int CPDFPages::ParseLine(CParamArray *tokens, char *goOn, void * /*context*/) {
  if (tokens == nullptr)
    return 0;
  return zeroWithoutMemory([&] {
    ReferenceValues values(*tokens);
    return walkObject(tokens, goOn, [&](unsigned long i) -> unsigned long {
      const std::string_view token = tokens->token(i);
      const bool isKids = token == "/Kids";
      if (!isKids && token != "/Count")
        return 1;
      if (i + 1 == tokens->GetCount())
        return 0;
      if (!isKids) {
        count_ = static_cast<std::uint32_t>(numberOf(tokens->token(i + 1)));
        return 2;
      }
      const unsigned long used = values.read(i + 1, kids_);
      return used == 0 ? failed : used + 1;
    });
  });
}

int CPDFPages::ReleaseParse() {
  CPDFSection::ReleaseParse();
  count_ = 0;
  kids_.Release();
  return 1;
}

} // namespace searchsystem
