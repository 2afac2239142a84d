#include "pdf_reader/CPDFKids.h"

#include "pdf_reader/ReferenceValues.h"
#include "pdf_reader/ZeroWithoutMemory.h"

namespace searchsystem {

int CPDFKids::ParseLine(CParamArray *tokens, char *goOn, void * /*context*/) {
  if (tokens == nullptr)
    return 0;
  return zeroWithoutMemory([&] {
    ReferenceValues values(*tokens);
    return walkObject(tokens, goOn, [&](unsigned long i) -> unsigned long {
      if (tokens->token(i) != "/Contents")
        return 1;
      if (i + 1 == tokens->GetCount())
        return 0;
      const unsigned long used = values.read(i + 1, contents_);
      return used == 0 ? failed : used + 1;
    });
  });
}

int CPDFKids::ReleaseParse() {
  CPDFSection::ReleaseParse();
  contents_.Release();
  return 1;
}

} // namespace searchsystem
