#include "pdf_reader/ReferenceValues.h"

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/LineUtility.h"

#include <algorithm>

namespace searchsystem {

unsigned long ReferenceValues::readBehind(unsigned long index, CObjectList &list) {
  const unsigned long rest = tokens_.GetCount() - ++index;
  if (rest == 0)
    return 0;
  constexpr unsigned long shortestArray = 5;
  constexpr unsigned long singleReference = 3;
  unsigned long length = arrayLengthAt(index);
  if (length < shortestArray)
    length = std::min(singleReference, rest);
  return list.append(tokens_, index, length) ? length + 1 : CPDFSection::failed;
}

unsigned long ReferenceValues::arrayLengthAt(unsigned long index) {
  if (tokens_.token(index) != "[" || (!isUnclosed_.empty() && isUnclosed_[index]))
    return 0;
  const auto length = static_cast<unsigned long>(GetArrayLength(&tokens_, static_cast<int>(index)));
  if (length == 0) {
    isUnclosed_.resize(tokens_.GetCount());
    unsigned long ends = 0;
    for (unsigned long i = tokens_.GetCount(); i-- > index;) {
      const std::string_view token = tokens_.token(i);
      isUnclosed_[i] = token == "[" && ends == 0;
      if (token == "]")
        ++ends;
      else if (token == "[" && ends > 0)
        --ends;
    }
  }
  return length;
}

} // namespace searchsystem
