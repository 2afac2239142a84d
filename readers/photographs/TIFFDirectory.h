#pragma once

#include "readers/photographs/ByteNumbers.h"
#include "readers/photographs/ByteRange.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace searchsystem {

/// How a TIFF structure is written.
struct TIFFLayout {
  std::endian order;
  /// BigTIFF: counts and offsets have eight bytes.
  bool isBig;
};

/// One value of a directory (TIFF 6.0, section 2).
struct TIFFEntry {
  std::uint16_t tag;
  std::uint16_t type;
  /// The bytes of one number.
  std::size_t unitSize;
  ByteRange value;
};

/// The entries of a directory, one by one. Those whose value lies outside of the structure, or is
/// of a type that nobody knows, are passed over.
class TIFFDirectory {
public:
  TIFFDirectory(const ByteRange &block, const TIFFLayout &layout, std::uint64_t offset);

  /// None behind the last one.
  [[nodiscard]] std::optional<TIFFEntry> next();
  /// Where the next directory stands; 0 if there is none.
  [[nodiscard]] std::uint64_t nextDirectory() const;

private:
  [[nodiscard]] std::optional<TIFFEntry> entryAt(std::uint64_t offset) const;
  [[nodiscard]] std::size_t entrySize() const noexcept { return layout_.isBig ? 20 : 12; }
  [[nodiscard]] std::size_t offsetSize() const noexcept { return layout_.isBig ? 8 : 4; }
  [[nodiscard]] std::uint64_t number(std::uint64_t offset, std::size_t size) const {
    return numberOf(block_.at(offset, size), size, layout_.order);
  }

  const ByteRange block_;
  const TIFFLayout layout_;
  std::uint64_t position_;
  std::uint64_t left_ = 0;
  /// Of the entries; nowhere if there is no directory.
  std::uint64_t end_ = UINT64_MAX;
};

} // namespace searchsystem
