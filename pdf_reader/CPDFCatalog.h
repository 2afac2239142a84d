#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/tagOBJECTRECORD.h"

namespace searchsystem {

/// A document's catalog (PDF standard, 7.7.2): the reference of its page tree.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFCatalog : public CPDFSection {
public:
  CPDFCatalog() noexcept = default;

  int ReleaseParse() override;

  /// Gives the reference, zeros when none was read; a null `out` is ignored.
  void GetPagesInfo(tagOBJECTRECORD *out) const noexcept;

private:
  int takeTokens(CParamArray &tokens, char &goOn) override;

  tagOBJECTRECORD pages_;
};

} // namespace searchsystem
