#include "pdf_reader/CPDFCatalog.h"

#include "pdf_reader/ReferenceTokens.h"

int CPDFCatalog::ParseLine(CParamArray *tokens, char *goOn, void * /*context*/) {
  if (tokens == nullptr || goOn == nullptr)
    return 0;
  while (tokens->GetCount() > 0) {
    const std::string_view token = tokens->token(0);
    unsigned long used = 1;
    if (!isInside_) {
      isInside_ = token == "obj";
    } else if (token == "endobj") {
      isInside_ = false;
      *goOn = 0;
      tokens->dropFront(used);
      return 1;
    } else if (token == "/Pages") {
      used = 4;
      if (tokens->GetCount() < used)
        return 1;
      pages_ = referenceAt(*tokens, 1);
    }
    tokens->dropFront(used);
  }
  return 1;
}

void CPDFCatalog::Release() {
  CPDFSection::Release();
  ReleaseParse();
}

void CPDFCatalog::ReleaseParse() {
  CPDFSection::ReleaseParse();
  pages_ = {};
}

void CPDFCatalog::GetPagesInfo(tagOBJECTRECORD *out) const noexcept {
  if (out != nullptr)
    *out = pages_;
}
