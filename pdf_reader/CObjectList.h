#pragma once

#include "pdf_reader/CParamArray.h"
#include "pdf_reader/tagOBJECTRECORD.h"

#include <vector>

namespace searchsystem {

/// A list of references to objects.
///
/// The operations return 1 for success and 0 for failure. Ownership: owns its records. Threads: one
/// at a time.
class CObjectList {
public:
  /// Appends a record. 0 if memory is short.
  int AddObject(int number, unsigned short generation, unsigned char flag) noexcept;

  /// Appends a copy. 0 if `record` is null or memory is short.
  int AddObject(const tagOBJECTRECORD *record) noexcept;

  [[nodiscard]] int GetCount() const noexcept { return static_cast<int>(records_.size()); }

  /// Valid until the next change; null if `index` is out of range.
  [[nodiscard]] const tagOBJECTRECORD *GetObject(int index) const noexcept;

  /// Appends the references of a token array, with or without brackets around them: three tokens
  /// each, the third of any kind. 0 if the array is null or has fewer than three tokens, or memory
  /// is short.
  int Parse(const CParamArray *tokens) noexcept;

  /// Does so for the `count` existing tokens from `index` on. False if they are fewer than three.
  /// Throws `std::bad_alloc`.
  bool append(const CParamArray &tokens, unsigned long index, unsigned long count);

  void Release() noexcept { records_ = {}; }

private:
  std::vector<tagOBJECTRECORD> records_;
};

} // namespace searchsystem
