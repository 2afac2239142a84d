#include "pdf_reader/CPDFPages.h"

#include "pdf_reader/ReferenceValues.h"
#include "pdf_reader/TokenNumber.h"

#include <new>

int CPDFPages::ParseLine(CParamArray *tokens, char *goOn, void * /*context*/) {
  if (tokens == nullptr || goOn == nullptr)
    return 0;
  const unsigned long count = tokens->GetCount();
  unsigned long i = 0;
  bool isEnd = false;
  bool hasFailed = false;
  try {
    ReferenceValues values(*tokens);
    while (i < count && !isEnd) {
      const std::string_view token = tokens->token(i);
      const bool isKids = token == "/Kids";
      if (!isInside_) {
        isInside_ = token == "obj";
      } else if (token == "endobj") {
        isInside_ = false;
        isEnd = true;
      } else if (isKids || token == "/Count") {
        if (i + 1 == count)
          break;
        unsigned long used = 1;
        if (isKids)
          used = values.read(i + 1, kids_);
        else
          count_ = static_cast<std::uint32_t>(numberOf(tokens->token(i + 1)));
        hasFailed = used == 0;
        if (hasFailed)
          break;
        i += used;
      }
      ++i;
    }
  } catch (const std::bad_alloc &) {
    return 0;
  }
  tokens->dropFront(i);
  if (isEnd)
    *goOn = 0;
  return hasFailed ? 0 : 1;
}

void CPDFPages::Release() {
  CPDFSection::Release();
  ReleaseParse();
}

void CPDFPages::ReleaseParse() {
  CPDFSection::ReleaseParse();
  count_ = 0;
  kids_.Release();
}
