#pragma once

#include "pdf_reader/CObjectList.h"
#include "pdf_reader/CPDFSection.h"

namespace searchsystem {

/// A page (PDF standard, 7.7.3.3): the references of its content streams.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFKids : public CPDFSection {
public:
  /// Only "obj", "endobj" and "/Contents" matter.
  CPDFKids() noexcept { marks_ = {'j', 'C'}; }

  int ReleaseParse() override;

  [[nodiscard]] int GeContentsCount() const noexcept { return contents_.GetCount(); }

  /// Valid until the next parse; null if `index` is out of range.
  [[nodiscard]] const tagOBJECTRECORD *GetContentsInfo(int index) const noexcept {
    return contents_.GetObject(index);
  }

private:
  int takeTokens(CParamArray &tokens, char &goOn) override;

  CObjectList contents_;
};

} // namespace searchsystem
