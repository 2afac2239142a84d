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

  /// Appends to `list` the references that begin at `index`, where there must be a token. Gives how
  /// many tokens they take, at most all that there are; 0 when fewer than three are there, or
  /// memory is short. Of an array without an end, or with fewer than three tokens in it, three
  /// tokens are taken. Throws `std::bad_alloc`.
  unsigned long read(unsigned long index, CObjectList &list);

private:
  [[nodiscard]] int arrayLengthAt(unsigned long index);
  void findUnclosed();

  const CParamArray &tokens_;
  /// Whether the token at an index is a bracket without an end; empty as long as none was met.
  /// It spares a scan to the last token for each of them.
  std::vector<bool> isUnclosed_;
};

} // namespace searchsystem
