#include "pdf_reader/CPDFXRefTable.h"

#include "pdf_reader/TokenNumber.h"
#include "pdf_reader/ZeroWithoutMemory.h"

#include <algorithm>
#include <limits>

namespace searchsystem {

int CPDFXRefTable::ParseLine(CParamArray *tokens, char *goOn, void * /*context*/) {
  if (tokens == nullptr || goOn == nullptr)
    return 0;
  while (tokens->GetCount() > 0) {
    if (!isInside_) {
      isInside_ = tokens->token(0) == "xref";
      tokens->dropFront(1);
    } else if (expectsHeader_) {
      if (tokens->GetCount() != 2)
        return 1;
      firstNumber_ = numberOf(tokens->token(0));
      sectionCount_ = numberOf(tokens->token(1));
      if (sectionCount_ == 0 || firstNumber_ < 0 || firstNumber_ >= size_) {
        *goOn = 0;
        return 1;
      }
      nextNumber_ = firstNumber_;
      expectsHeader_ = false;
      tokens->dropFront(2);
    } else {
      if (tokens->GetCount() < 3)
        return 1;
      if (SetRefTable(nextNumber_, offsetOf(tokens->token(0)), generationOf(tokens->token(1)),
                      letterOf(tokens->token(2))) != 1)
        return 0;
      ++nextNumber_;
      expectsHeader_ = nextNumber_ == std::int64_t{firstNumber_} + sectionCount_;
      tokens->dropFront(3);
    }
  }
  return 1;
}

int CPDFXRefTable::Parse(CIOStream *stream) {
  ReleaseParse();
  if (stream == nullptr)
    return 0;
  return zeroWithoutMemory([&] { return parseSection(*stream); });
}

int CPDFXRefTable::parseSection(CIOStream &stream) {
  TokenReader reader(stream, TokenReader::Comments::cut);
  tokens_.Reset();
  char goOn = 1;
  unsigned long handedOver = 0;
  while (reader.next(tokens_)) {
    const bool isTrailer = tokens_.token(reader.lineIndex()).starts_with("trailer");
    if (isTrailer) {
      // An entry may wait here whose line end the edge of a block has cut off.
      tokens_.DeleteParam(reader.lineIndex(), CParamArray::notFound);
      if (tokens_.GetCount() > handedOver && ParseLine(&tokens_, &goOn, nullptr) != 1)
        return 0;
      return stream.Seek(reader.linePosition(), streamSeekBegin) == 1 ? 1 : 0;
    }
    if (!reader.isGroupComplete())
      continue;
    const int result = ParseLine(&tokens_, &goOn, nullptr);
    if (result != 1 || goOn == 0)
      return result;
    handedOver = tokens_.GetCount();
  }
  return reader.result();
}

int CPDFXRefTable::Release() {
  CPDFSection::Release();
  entries_.clear();
  size_ = 0;
  return 1;
}

int CPDFXRefTable::ReleaseParse() {
  CPDFSection::ReleaseParse();
  expectsHeader_ = true;
  nextNumber_ = firstNumber_ = sectionCount_ = 0;
  return 1;
}

int CPDFXRefTable::SetTableSize(int count) {
  Release();
  size_ = std::max(count, 0);
  return 1;
}

int CPDFXRefTable::SetRefTable(int index, unsigned long offset, unsigned short generation,
                               unsigned char type) {
  if (index < 0 || index == std::numeric_limits<std::int32_t>::max())
    return 0;
  return zeroWithoutMemory([&] {
    entries_.set(index, {static_cast<std::uint32_t>(offset), generation, type});
    size_ = std::max(size_, index + 1);
    return 1;
  });
}

unsigned long CPDFXRefTable::GetOffset(tagOBJECTRECORD ref) const noexcept {
  if (ref.number < 0 || ref.number >= size_)
    return 0;
  const XRefEntry entry = entries_.at(ref.number);
  return entry.generation == ref.generation ? entry.offset : 0;
}

} // namespace searchsystem
