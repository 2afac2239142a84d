#pragma once

#include "pdf_reader/CParamArray.h"
#include "pdf_reader/tagOBJECTRECORD.h"

#include <vector>

namespace searchsystem {

/// A list of references to objects.
///
/// The operations answer 1 for success and 0 for failure. Ownership: owns its records. Threads: one
/// at a time.
class CObjectList {
public:
  /// Appends a record. 0 when memory is short.
  int AddObject(int number, unsigned short generation, unsigned char flag) noexcept;

  /// Appends a copy. 0 when `record` is null or memory is short.
  int AddObject(const tagOBJECTRECORD *record) noexcept;

  [[nodiscard]] int GetCount() const noexcept { return static_cast<int>(records_.size()); }

  /// Valid until the next change; null when there is none at `index`.
  [[nodiscard]] const tagOBJECTRECORD *GetObject(int index) const noexcept;

  /// Appends the references of a token array, with or without brackets around them: three tokens
  /// each, the third of any kind. 0 when there are fewer than three tokens, the array is null or
  /// memory is short.
  int Parse(const CParamArray *tokens) noexcept;

  /// The same for `count` tokens from `index` on, which must exist. False when they are fewer than
  /// three. Throws `std::bad_alloc`.
  bool append(const CParamArray &tokens, unsigned long index, unsigned long count);

  void Release() noexcept { records_ = {}; }

private:
  std::vector<tagOBJECTRECORD> records_;
};

} // namespace searchsystem
