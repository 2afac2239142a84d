#pragma once

#include "pdf_reader/CPDFSection.h"

#include <cstddef>

namespace searchsystem {

/// The text that a page's content stream shows with hexadecimal strings and the operator Tj (PDF
/// standard, 9.4.3). Compressed streams give none.
///
/// The parse ends at the first stream that begins with something else than BT, and otherwise goes
/// on through the objects that follow, to the end of the file.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFContents : public CPDFSection {
public:
  CPDFContents() noexcept = default;

  int ParseLine(CParamArray *tokens, char *goOn, void *context) override;
  int Release() override;
  int ReleaseParse() override;

  /// The length of all text with room for a NUL; 0 without text.
  [[nodiscard]] int GetTextLength() const noexcept;

  /// Copies the strings, one behind the other, into `buf` with zeros behind them. `*ioSize` is the
  /// room there and receives how many bytes were copied. 0 when a pointer is null.
  int GetTextString(unsigned char *buf, unsigned long *ioSize) const noexcept;

private:
  unsigned long parseTokens(const CParamArray &tokens, bool &isStopped, bool &hasFailed);
  unsigned long parseText(const CParamArray &tokens, unsigned long index, unsigned long &found,
                          bool &hasFailed);
  bool addString(std::string_view token);

  bool isInStream_ = false;
  bool isInText_ = false;
  CParamArray texts_;
  std::size_t textLength_ = 0;
};

} // namespace searchsystem
