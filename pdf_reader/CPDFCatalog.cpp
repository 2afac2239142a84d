#include "pdf_reader/CPDFCatalog.h"

namespace searchsystem {

int CPDFCatalog::takeTokens(CParamArray &tokens, char &goOn) {
  return walkObject(tokens, goOn, [&](unsigned long i) -> unsigned long {
    if (tokens.token(i) != "/Pages")
      return 1;
    constexpr unsigned long size = 4;
    if (tokens.GetCount() - i < size)
      return 0;
    pages_ = referenceAt(tokens, i + 1);
    return size;
  });
}

int CPDFCatalog::ReleaseParse() {
  pages_ = {};
  return CPDFSection::ReleaseParse();
}

void CPDFCatalog::GetPagesInfo(tagOBJECTRECORD *out) const noexcept {
  if (out != nullptr)
    *out = pages_;
}

} // namespace searchsystem
