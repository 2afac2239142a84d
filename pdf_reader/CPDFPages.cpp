#include "pdf_reader/CPDFPages.h"

#include "pdf_reader/ReferenceValues.h"
#include "pdf_reader/TokenNumber.h"

namespace searchsystem {

int CPDFPages::takeTokens(CParamArray &tokens, char &goOn) {
  ReferenceValues values(tokens);
  return walkObject(tokens, goOn, [&](unsigned long i) -> unsigned long {
    if (tokens.token(i) == "/Kids")
      return values.readBehind(i, kids_);
    if (tokens.token(i) != "/Count")
      return 1;
    if (i + 1 == tokens.GetCount())
      return 0;
    count_ = static_cast<std::uint32_t>(numberOf(tokens.token(i + 1)));
    return 2;
  });
}

int CPDFPages::ReleaseParse() {
  count_ = 0;
  kids_.Release();
  return CPDFSection::ReleaseParse();
}

} // namespace searchsystem
