#pragma once

#include "readers/photographs/ByteRange.h"
#include "readers/photographs/PhotographReading.h"

#include <cstdint>

namespace searchsystem {

/// Where a TIFF structure stands, which decides what of it is looked at.
enum class TIFFUse : std::uint8_t {
  /// A file: TIFF, BigTIFF, or a camera maker's format built on it. All images of it.
  file,
  /// A block of another file. Its first image is the photograph; the second one, a thumbnail.
  block,
};

/// Whether a TIFF file begins so (TIFF 6.0, section 2; BigTIFF; RW2 and ORF have marks of their
/// own).
[[nodiscard]] bool isTIFF(const ByteRange &range);

/// Reads the texts and dates of a TIFF structure, and the descriptions of other kinds that lie in
/// it. Offsets count from the range's beginning.
void readTIFF(const ByteRange &block, PhotographReading &reading, TIFFUse use);

/// Reads the block of another file. Some writers put the mark of a JPEG segment before it.
void readExifBlock(const ByteRange &block, PhotographReading &reading);

/// The same, where a number of four bytes says how far behind it the block begins (ISO/IEC
/// 23008-12, A.2.1; ISO/IEC 18181-2, 9.5).
void readOffsetExif(const ByteRange &data, PhotographReading &reading);

} // namespace searchsystem
