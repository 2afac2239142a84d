#include "pdf_reader/CPDFTrailer.h"

#include "streams/ZeroWithoutMemory.h"

namespace searchsystem {

int CPDFTrailer::takeTokens(CParamArray &tokens, char &goOn) {
  while (tokens.GetCount() > 0) {
    const std::string_view token = tokens.token(0);
    const bool isRoot = isInside_ && token == "/Root";
    const bool isSize = isInside_ && token == "/Size";
    const bool isOffset = isInside_ && token == "startxref";
    const unsigned long used = isRoot ? 4 : isSize || isOffset ? 2 : 1;
    if (tokens.GetCount() < used)
      return 1;
    if (isRoot)
      root_ = referenceAt(tokens, 1);
    if (isSize)
      size_ = numberOf(tokens.token(1));
    if (isOffset) {
      xrefOffset_ = static_cast<std::int32_t>(offsetOf(tokens.token(1)));
      goOn = 0;
    }
    isInside_ = isInside_ || token == "trailer";
    tokens.dropFront(used);
  }
  return 1;
}

int CPDFTrailer::ReleaseParse() {
  size_.reset();
  root_.reset();
  xrefOffset_ = 0;
  return CPDFSection::ReleaseParse();
}

int CPDFTrailer::Move1stTrailer(CIOStream *stream) {
  return stream == nullptr ? 0 : zeroWithoutMemory([&] { return moveToLast(*stream) ? 1 : 0; });
}

bool CPDFTrailer::moveToLast(CIOStream &stream) {
  constexpr unsigned char keyword[] = "trailer";
  long found = -1;
  return stream.Seek(0, streamSeekBegin) == 1 &&
         findBackwards(stream, stream.GetSize(), keyword, found) == 1 && found != -1 &&
         stream.Seek(found, streamSeekBegin) == 1;
}

int CPDFTrailer::MoveNextTrailer(CIOStream *stream) {
  return stream == nullptr ? 0 : zeroWithoutMemory([&] { return moveToNext(*stream) ? 1 : 0; });
}

bool CPDFTrailer::moveToNext(CIOStream &stream) {
  TokenReader reader(stream, TokenReader::Comments::cut, TokenReader::noEnd,
                     TokenReader::Marks{'t', 't'});
  CParamArray tokens;
  while (reader.next(tokens)) {
    if (!reader.isGroupComplete())
      continue;
    if (tokens.token(0) == "trailer")
      return stream.Seek(reader.groupPosition(), streamSeekBegin) == 1;
    tokens.Reset();
  }
  return reader.result() == 1;
}

int CPDFTrailer::GetXRefKeySize(int *size) const noexcept {
  if (size == nullptr || !size_)
    return 0;
  *size = *size_;
  return 1;
}

int CPDFTrailer::SetXRefKeySize(int size) noexcept {
  size_ = size;
  return 1;
}

int CPDFTrailer::GetRootInfo(tagOBJECTRECORD *root) const noexcept {
  if (root == nullptr || !root_)
    return 0;
  *root = *root_;
  return 1;
}

int CPDFTrailer::SetRootInfo(const tagOBJECTRECORD *root) noexcept {
  if (root == nullptr)
    return 0;
  root_ = *root;
  return 1;
}

} // namespace searchsystem
