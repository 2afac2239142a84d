#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/ContentState.h"

#include <string>
#include <string_view>

namespace searchsystem {

/// The text that a page's content stream shows with hexadecimal strings and the operator Tj (PDF
/// standard, 9.4.3). Compressed streams have none.
///
/// The parse ends at the first stream that does not begin with BT. Until then it continues through
/// the following objects, to the end of the file.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFContents : public CPDFSection {
public:
  CPDFContents() noexcept = default;

  int ReleaseParse() override;

  /// The length of all text with room for a NUL; 0 without text.
  [[nodiscard]] int GetTextLength() const noexcept;

  /// Copies the text to `buf` and fills the rest with zeros. `*ioSize` is the size of `buf` and
  /// receives the number of bytes copied. 0 if a pointer is null.
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
