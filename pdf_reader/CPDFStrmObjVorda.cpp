#include "pdf_reader/CPDFStrmObjVorda.h"

namespace searchsystem {

int CPDFStrmObjVorda::takeTokens(CParamArray &tokens, char &goOn) {
  while (tokens.GetCount() > 0) {
    const std::string_view token = tokens.token(0);
    if (!isInside_) {
      isInside_ = token == "obj";
    } else if (!isInStream_) {
      isInside_ = token != "endobj";
      isInStream_ = token == "stream";
    } else if (token == "endstream") {
      isInStream_ = false;
    } else {
      isVorda_ =
          token == "%" && tokens.GetCount() == 2 && tokens.token(1).starts_with("VORDA_PFINF_TYPE");
      goOn = 0;
      return 1;
    }
    tokens.dropFront(1);
  }
  return 1;
}

int CPDFStrmObjVorda::ReleaseParse() {
  isVorda_ = isInStream_ = false;
  return CPDFSection::ReleaseParse();
}

} // namespace searchsystem
