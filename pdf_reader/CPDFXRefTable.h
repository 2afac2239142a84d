#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/tagOBJECTRECORD.h"

#include <cstdint>
#include <vector>

namespace searchsystem {

/// The positions of a document's objects, from its cross-reference sections (PDF standard, 7.5.4).
/// Each section that is parsed adds to the table and overwrites what earlier ones said.
///
/// Cross-reference streams are not read. Ownership, threads and failure as `CPDFSection`.
class CPDFXRefTable : public CPDFSection {
public:
  CPDFXRefTable() noexcept = default;

  /// Reads one section. Where it ended with a "trailer" line, the stream is at that keyword
  /// afterwards.
  int read(CIOStream &stream) override;

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
  struct Entry {
    std::int32_t number;
    std::uint32_t offset = 0;
    std::uint16_t generation = 0;
  };

  int takeTokens(CParamArray &tokens, char &goOn) override;
  bool set(Entry entry);

  std::int32_t size_ = 0;
  /// Those that were set, all of them: a few bytes of a document can name object 2,000,000,000.
  /// They are sorted by number when that is first asked for.
  mutable std::vector<Entry> entries_;
  mutable bool isSorted_ = true;

  std::int32_t nextNumber_ = 0;
  std::int64_t endNumber_ = 0;
  bool expectsHeader_ = true;
};

} // namespace searchsystem
