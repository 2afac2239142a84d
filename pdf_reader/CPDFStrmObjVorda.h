#pragma once

#include "pdf_reader/CPDFSection.h"

namespace searchsystem {

/// A stream object whose data may begin with the maker's mark: a comment with the word
/// VORDA_PFINF_TYPE on a line of its own.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFStrmObjVorda : public CPDFSection {
public:
  /// Reads comments as tokens.
  CPDFStrmObjVorda() noexcept { comments_ = TokenReader::Comments::keep; }

  int ReleaseParse() override;

  /// Whether the mark was found: 1 or 0.
  [[nodiscard]] int IsVorda() const noexcept { return isVorda_ ? 1 : 0; }

private:
  int takeTokens(CParamArray &tokens, char &goOn) override;

  bool isVorda_ = false;
  bool isInStream_ = false;
};

} // namespace searchsystem
