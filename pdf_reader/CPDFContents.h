#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/ContentState.h"

#include <string>
#include <string_view>

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

  int ReleaseParse() override;

  /// The length of all text with room for a NUL; 0 without text.
  [[nodiscard]] int GetTextLength() const noexcept;

  /// Copies the strings, one behind the other, into `buf` with zeros behind them. `*ioSize` is the
  /// room there and receives how many bytes were copied. 0 when a pointer is null.
  int GetTextString(unsigned char *buf, unsigned long *ioSize) const noexcept;

  /// All text, valid until the next change.
  [[nodiscard]] std::string_view text() const noexcept { return text_; }

private:
  int takeTokens(CParamArray &tokens, char &goOn) override;
  void addString(std::string_view token);

  ContentState state_;
  std::string text_;
};

} // namespace searchsystem
