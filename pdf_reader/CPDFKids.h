#pragma once

#include "pdf_reader/CObjectList.h"
#include "pdf_reader/CPDFSection.h"

/// A page (PDF standard, 7.7.3.3): the references of its content streams.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFKids : public CPDFSection {
public:
  CPDFKids() noexcept = default;

  int ParseLine(CParamArray *tokens, char *goOn, void *context) override;
  void Release() override;
  void ReleaseParse() override;

  [[nodiscard]] int GeContentsCount() const noexcept { return contents_.GetCount(); }

  /// Valid until the next parse; null when there is none at `index`.
  [[nodiscard]] const tagOBJECTRECORD *GetContentsInfo(int index) const noexcept {
    return contents_.GetObject(index);
  }

private:
  CObjectList contents_;
};
