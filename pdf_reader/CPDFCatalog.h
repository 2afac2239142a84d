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

  /// Copies the reference to `out`, unless null; zeros if none was read.
  void GetPagesInfo(tagOBJECTRECORD *out) const noexcept;

private:
  int takeTokens(CParamArray &tokens, char &goOn) override;

  tagOBJECTRECORD pages_;
};

} // namespace searchsystem
