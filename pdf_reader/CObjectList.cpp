#include "pdf_reader/CObjectList.h"

#include "streams/ZeroWithoutMemory.h"

#include <limits>

namespace searchsystem {

int CObjectList::AddObject(int number, unsigned short generation, unsigned char flag) noexcept {
  const tagOBJECTRECORD record{number, generation, flag};
  return AddObject(&record);
}

int CObjectList::AddObject(const tagOBJECTRECORD *record) noexcept {
  if (record == nullptr || GetCount() == std::numeric_limits<int>::max())
    return 0;
  return zeroWithoutMemory([&] {
    records_.push_back(*record);
    return 1;
  });
}

const tagOBJECTRECORD *CObjectList::GetObject(int index) const noexcept {
  if (index < 0 || index >= GetCount())
    return nullptr;
  return &records_[static_cast<std::size_t>(index)];
}

int CObjectList::Parse(const CParamArray *tokens) noexcept {
  if (tokens == nullptr)
    return 0;
  return zeroWithoutMemory([&] { return append(*tokens, 0, tokens->GetCount()) ? 1 : 0; });
}

bool CObjectList::append(const CParamArray &tokens, unsigned long index, unsigned long count) {
  if (count < 3)
    return false;
  unsigned long end = index + count;
  if (tokens.token(end - 1) == "]")
    --end;
  for (unsigned long i = index + (tokens.token(index) == "[" ? 1 : 0); i + 3 <= end; i += 3)
    records_.push_back(referenceAt(tokens, i));
  return true;
}

} // namespace searchsystem
