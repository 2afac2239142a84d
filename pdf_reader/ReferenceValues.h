#pragma once

#include "pdf_reader/CObjectList.h"
#include "pdf_reader/CParamArray.h"

#include <vector>

namespace searchsystem {

/// The values of keys that name one object or an array of them, in the tokens of one group.
///
/// The tokens must live as long and keep their places. Threads: one at a time.
class ReferenceValues {
public:
  explicit ReferenceValues(const CParamArray &tokens) noexcept : tokens_(tokens) {}

  /// Appends to `list` the references that follow the key at `index`. Returns how many tokens key
  /// and value take: 0 when the value is still to come, `CPDFSection::failed` when it has fewer
  /// than three tokens. Of an array without an end, or with fewer than three tokens in it, three
  /// tokens are taken. Throws `std::bad_alloc`.
  unsigned long readBehind(unsigned long index, CObjectList &list);

private:
  [[nodiscard]] unsigned long arrayLengthAt(unsigned long index);

  const CParamArray &tokens_;
  /// Whether the token at an index is a bracket without an end; empty until one is met. It saves a
  /// scan to the last token for each of them.
  std::vector<bool> isUnclosed_;
};

} // namespace searchsystem
