#include "pdf_reader/CPDFKids.h"

#include "pdf_reader/ReferenceValues.h"

namespace searchsystem {

int CPDFKids::takeTokens(CParamArray &tokens, char &goOn) {
  ReferenceValues values(tokens);
  return walkObject(tokens, goOn, [&](unsigned long i) {
    return tokens.token(i) == "/Contents" ? values.readBehind(i, contents_) : 1;
  });
}

int CPDFKids::ReleaseParse() {
  contents_.Release();
  return CPDFSection::ReleaseParse();
}

} // namespace searchsystem
