#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/tagOBJECTRECORD.h"

#include <cstdint>

namespace searchsystem {

/// A trailer (PDF standard, 7.5.5): the number of objects, the reference of the catalog, and the
/// offset after "startxref", which leads to other sections. /Prev is ignored.
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFTrailer : public CPDFSection {
public:
  CPDFTrailer() noexcept = default;

  int ReleaseParse() override;

  /// Moves the stream to the last "trailer" of the file. 0 if there is none.
  static int Move1stTrailer(CIOStream *stream);

  /// Moves the stream forward to the next line that begins with the word "trailer", or to its end.
  static int MoveNextTrailer(CIOStream *stream);

  /// Like these two, but throw `std::bad_alloc` if memory is short.
  static bool moveToLast(CIOStream &stream);
  static bool moveToNext(CIOStream &stream);

  /// 0 if no /Size was read, or `size` is null.
  int GetXRefKeySize(int *size) const noexcept;
  int SetXRefKeySize(int size) noexcept;

  /// 0 if no /Root was read, or `root` is null.
  int GetRootInfo(tagOBJECTRECORD *root) const noexcept;
  int SetRootInfo(const tagOBJECTRECORD *root) noexcept;

  /// The offset of the cross-reference section; 0 if unknown.
  [[nodiscard]] int GetXRefOffset() const noexcept { return xrefOffset_; }

private:
  int takeTokens(CParamArray &tokens, char &goOn) override;

  std::optional<std::int32_t> size_;
  std::optional<tagOBJECTRECORD> root_;
  std::int32_t xrefOffset_ = 0;
};

} // namespace searchsystem
