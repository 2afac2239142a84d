#include "pdf_reader/CPDFTrailer.h"

#include "pdf_reader/ReferenceTokens.h"
#include "pdf_reader/ZeroWithoutMemory.h"

namespace searchsystem {

int CPDFTrailer::ParseLine(CParamArray *tokens, char *goOn, void * /*context*/) {
  if (tokens == nullptr || goOn == nullptr)
    return 0;
  while (tokens->GetCount() > 0) {
    const std::string_view token = tokens->token(0);
    unsigned long used = 1;
    if (!isInside_) {
      isInside_ = token == "trailer";
    } else if (token == "/Size") {
      used = 2;
      if (tokens->GetCount() < used)
        return 1;
      SetXRefKeySize(numberOf(tokens->token(1)));
    } else if (token == "/Root") {
      used = 4;
      if (tokens->GetCount() < used)
        return 1;
      root_ = referenceAt(*tokens, 1);
      hasRoot_ = true;
    } else if (token == "startxref") {
      used = 2;
      if (tokens->GetCount() < used)
        return 1;
      xrefOffset_ = static_cast<std::int32_t>(offsetOf(tokens->token(1)));
      *goOn = 0;
    }
    tokens->dropFront(used);
  }
  return 1;
}

int CPDFTrailer::ReleaseParse() {
  CPDFSection::ReleaseParse();
  hasSize_ = hasRoot_ = false;
  size_ = xrefOffset_ = 0;
  root_ = {};
  return 1;
}

int CPDFTrailer::Move1stTrailer(CIOStream *stream) {
  if (stream == nullptr || stream->Seek(0, streamSeekBegin) != 1)
    return 0;
  constexpr unsigned char keyword[] = "trailer";
  long found = -1;
  if (FindKeyWordRev(stream, stream->GetSize(), keyword, &found) != 1 || found == -1)
    return 0;
  return stream->Seek(found, streamSeekBegin) == 1 ? 1 : 0;
}

int CPDFTrailer::MoveNextTrailer(CIOStream *stream) {
  if (stream == nullptr)
    return 0;
  return zeroWithoutMemory([&] {
    TokenReader reader(*stream, TokenReader::Comments::cut, TokenReader::noEnd,
                       TokenReader::Telling{'t', 't'});
    CParamArray tokens;
    while (reader.next(tokens)) {
      if (!reader.isGroupComplete())
        continue;
      if (tokens.token(0) == "trailer")
        return stream->Seek(reader.groupPosition(), streamSeekBegin) == 1 ? 1 : 0;
      tokens.Reset();
    }
    return reader.result();
  });
}

int CPDFTrailer::GetXRefKeySize(int *size) const noexcept {
  if (size == nullptr || !hasSize_)
    return 0;
  *size = size_;
  return 1;
}

int CPDFTrailer::SetXRefKeySize(int size) noexcept {
  size_ = size;
  hasSize_ = true;
  return 1;
}

int CPDFTrailer::GetRootInfo(tagOBJECTRECORD *root) const noexcept {
  if (root == nullptr || !hasRoot_)
    return 0;
  *root = root_;
  return 1;
}

int CPDFTrailer::SetRootInfo(const tagOBJECTRECORD *root) noexcept {
  if (root == nullptr)
    return 0;
  root_ = *root;
  hasRoot_ = true;
  return 1;
}

} // namespace searchsystem
