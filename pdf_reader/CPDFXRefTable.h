#pragma once

#include "pdf_reader/CPDFSection.h"
#include "pdf_reader/tagOBJECTRECORD.h"

#include <cstdint>
#include <vector>

namespace searchsystem {

/// The positions of a document's objects, from its cross-reference sections (PDF standard, 7.5.4).
/// Each parse of a section adds entries to the table and overwrites earlier ones.
///
/// Cross-reference streams are not read. Ownership, threads and failure as `CPDFSection`.
class CPDFXRefTable : public CPDFSection {
public:
  CPDFXRefTable() noexcept = default;

  /// Reads one section. If a "trailer" line ends it, leaves the stream at that keyword.
  int read(CIOStream &stream) override;

  int Release() override;
  int ReleaseParse() override;

  /// Empties the table and sets its size; none if below 1. Always 1: only entries that are set take
  /// memory.
  virtual int SetTableSize(int count);

  /// Sets an entry and enlarges the table as needed. 0 if `index` is negative or the largest `int`,
  /// or memory is short.
  int SetRefTable(int index, unsigned long offset, unsigned short generation, unsigned char type);

  /// The offset of an object in the file, whether free or in use; 0 if unknown.
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
  /// Only those that were set: a few bytes of a document can name object 2,000,000,000. Sorted by
  /// number before the first lookup.
  mutable std::vector<Entry> entries_;
  mutable bool isSorted_ = true;

  std::int32_t nextNumber_ = 0;
  std::int64_t endNumber_ = 0;
  bool expectsHeader_ = true;
};

} // namespace searchsystem
