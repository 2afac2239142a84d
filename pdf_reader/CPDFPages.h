#pragma once

#include "pdf_reader/CObjectList.h"
#include "pdf_reader/CPDFSection.h"

#include <cstdint>

namespace searchsystem {

/// The top node of a page tree (PDF standard, 7.7.3): its "/Count" and the references of its kids.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFPages : public CPDFSection {
public:
  CPDFPages() noexcept = default;

  int ReleaseParse() override;

  /// The document's "/Count", which may differ from the number of kids read.
  [[nodiscard]] unsigned int GetKidsCount() const noexcept { return count_; }

  /// Valid until the next parse; null if `index` is out of range.
  [[nodiscard]] const tagOBJECTRECORD *GetKidsInfo(int index) const noexcept {
    return kids_.GetObject(index);
  }

private:
  int takeTokens(CParamArray &tokens, char &goOn) override;

  std::uint32_t count_ = 0;
  CObjectList kids_;
};

} // namespace searchsystem
