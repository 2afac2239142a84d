#pragma once

#include "pdf_reader/CPDFSection.h"

namespace searchsystem {

/// A stream object whose data may begin with the maker's mark: a comment line of a percent sign and
/// the word VORDA_PFINF_TYPE.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFStrmObjVorda : public CPDFSection {
public:
  CPDFStrmObjVorda() noexcept = default;

  int ParseLine(CParamArray *tokens, char *goOn, void *context) override;

  /// As the base's, but comments are read as tokens.
  int Parse(CIOStream *stream) override;

  int ReleaseParse() override;

  /// Whether the mark was found: 1 or 0.
  [[nodiscard]] int IsVorda() const noexcept { return isVorda_ ? 1 : 0; }

private:
  bool isVorda_ = false;
  bool isInStream_ = false;
};

} // namespace searchsystem
