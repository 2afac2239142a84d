#include "pdf_reader/CObjectList.h"

#include "pdf_reader/ReferenceTokens.h"
#include "streams/MemoryShortage.h"

#include <limits>
#include <new>

int CObjectList::AddObject(int number, unsigned short generation, unsigned char flag) noexcept {
  const tagOBJECTRECORD record{number, generation, flag};
  return AddObject(&record);
}

int CObjectList::AddObject(const tagOBJECTRECORD *record) noexcept {
  if (record == nullptr || GetCount() == std::numeric_limits<int>::max())
    return 0;
  try {
    records_.push_back(*record);
  } catch (const std::bad_alloc &) {
    MemoryShortage::note();
    return 0;
  }
  return 1;
}

const tagOBJECTRECORD *CObjectList::GetObject(int index) const noexcept {
  if (index < 0 || index >= GetCount())
    return nullptr;
  return &records_[static_cast<std::size_t>(index)];
}

int CObjectList::Parse(const CParamArray *tokens) noexcept {
  if (tokens == nullptr || tokens->GetCount() < 3)
    return 0;
  const unsigned long count = tokens->GetCount();
  const unsigned long first = tokens->token(0) == "[" ? 1 : 0;
  const unsigned long end = tokens->token(count - 1) == "]" ? count - 1 : count;
  for (unsigned long i = first; i + 3 <= end; i += 3) {
    const tagOBJECTRECORD record = referenceAt(*tokens, i);
    if (AddObject(&record) != 1)
      return 0;
  }
  return 1;
}
