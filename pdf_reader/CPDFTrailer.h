#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/tagOBJECTRECORD.h"

#include <cstdint>

namespace searchsystem {

/// A trailer (PDF standard, 7.5.5): how many objects there are, which one is the catalog, and the
/// number that follows "startxref". /Prev is ignored: sections are followed through
/// "startxref".
///
/// Ownership, threads and failure as `CPDFSection`.
class CPDFTrailer : public CPDFSection {
public:
  CPDFTrailer() noexcept = default;

  int ReleaseParse() override;

  /// Moves the stream to the last "trailer" of the whole file. 0 when there is none.
  static int Move1stTrailer(CIOStream *stream);

  /// Moves the stream from its position to the next line that begins with the word "trailer", or to
  /// its end.
  static int MoveNextTrailer(CIOStream *stream);

  /// As these two, but throw `std::bad_alloc` when memory is short.
  static bool moveToLast(CIOStream &stream);
  static bool moveToNext(CIOStream &stream);

  /// 0 when no /Size was read, or `size` is null.
  int GetXRefKeySize(int *size) const noexcept;
  int SetXRefKeySize(int size) noexcept;

  /// 0 when no /Root was read, or `root` is null.
  int GetRootInfo(tagOBJECTRECORD *root) const noexcept;
  int SetRootInfo(const tagOBJECTRECORD *root) noexcept;

  /// Where the cross-reference section begins; 0 when unknown.
  [[nodiscard]] int GetXRefOffset() const noexcept { return xrefOffset_; }

private:
  int takeTokens(CParamArray &tokens, char &goOn) override;

  std::optional<std::int32_t> size_;
  std::optional<tagOBJECTRECORD> root_;
  std::int32_t xrefOffset_ = 0;
};

} // namespace searchsystem
