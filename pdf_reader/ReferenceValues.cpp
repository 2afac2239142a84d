#include "pdf_reader/ReferenceValues.h"

#include "pdf_reader/LineUtility.h"

#include <algorithm>

namespace searchsystem {

unsigned long ReferenceValues::read(unsigned long index, CObjectList &list) {
  constexpr unsigned long shortestArray = 5;
  constexpr unsigned long singleReference = 3;
  auto length = static_cast<unsigned long>(arrayLengthAt(index));
  if (length < shortestArray)
    length = std::min(singleReference, tokens_.GetCount() - index);
  return list.Parse(tokens_, index, length) == 1 ? length : 0;
}

int ReferenceValues::arrayLengthAt(unsigned long index) {
  if (!isUnclosed_.empty() && isUnclosed_[index])
    return 0;
  const int length = GetArrayLength(&tokens_, static_cast<int>(index));
  if (length == 0 && isUnclosed_.empty() && tokens_.token(index) == "[")
    findUnclosed();
  return length;
}

void ReferenceValues::findUnclosed() {
  isUnclosed_.resize(tokens_.GetCount());
  unsigned long ends = 0;
  for (unsigned long i = tokens_.GetCount(); i-- > 0;) {
    const std::string_view token = tokens_.token(i);
    if (token == "]") {
      ++ends;
    } else if (token == "[") {
      isUnclosed_[i] = ends == 0;
      ends -= ends > 0 ? 1 : 0;
    }
  }
}

} // namespace searchsystem
