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

  /// Appends the references after the key at `index` to `list`. Returns the number of tokens of key
  /// and value: 0 if the value is yet to come, `CPDFSection::failed` if it has fewer than three.
  /// Takes three tokens of an array without an end, or with fewer than three in it. Throws
  /// `std::bad_alloc`.
  unsigned long readBehind(unsigned long index, CObjectList &list);

private:
  [[nodiscard]] unsigned long arrayLengthAt(unsigned long index);

  const CParamArray &tokens_;
  /// Whether the token at an index is a bracket without an end; empty before the first one. It
  /// saves a scan to the last token for each of them.
  std::vector<bool> isUnclosed_;
};

} // namespace searchsystem
