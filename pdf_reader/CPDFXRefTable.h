#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/XRefEntries.h"
#include "pdf_reader/tagOBJECTRECORD.h"

#include <cstdint>

namespace searchsystem {

/// The positions of a document's objects, from its cross-reference sections (PDF standard, 7.5.4).
/// Each section that is parsed adds to the table and overwrites what earlier ones said.
///
/// Cross-reference streams are not read. Ownership, threads and failure as `CPDFSection`.
class CPDFXRefTable : public CPDFSection {
public:
  CPDFXRefTable() noexcept = default;

  int ParseLine(CParamArray *tokens, char *goOn, void *context) override;

  /// Reads one section. Where it ended with a "trailer" line, the stream is at that keyword
  /// afterwards.
  int Parse(CIOStream *stream) override;

  int Release() override;
  int ReleaseParse() override;

  /// Empties the table and sets how many entries it has; below 1 is none. Always 1: memory is used
  /// when entries are set.
  virtual int SetTableSize(int count);

  /// Sets an entry and enlarges the table if it has to. 0 when `index` is negative, is the greatest
  /// number that there is, or memory is short.
  int SetRefTable(int index, unsigned long offset, unsigned short generation, unsigned char type);

  /// Where an object stands in the file, free or in use; 0 when unknown.
  [[nodiscard]] unsigned long GetOffset(tagOBJECTRECORD ref) const noexcept;

private:
  int parseSection(CIOStream &stream);

  std::int32_t size_ = 0;
  XRefEntries entries_;

  std::int32_t nextNumber_ = 0;
  std::int32_t firstNumber_ = 0;
  std::int32_t sectionCount_ = 0;
  bool expectsHeader_ = true;
};

} // namespace searchsystem
