#pragma once

#include "platform/foundation/DateTimeRec.h"

#include <cstdint>

namespace searchsystem {

/// The types of a tag's values (TIFF 6.0, section 2).
enum : std::int16_t {
  IMAGETAG_BYTE = 1,
  IMAGETAG_ASCII = 2,
  IMAGETAG_SHORT = 3,
  IMAGETAG_LONG = 4,
  IMAGETAG_RATIONAL = 5,
  IMAGETAG_SBYTE = 6,
  IMAGETAG_UNDEFINED = 7,
  IMAGETAG_SSHORT = 8,
  IMAGETAG_SLONG = 9,
  IMAGETAG_SRATIONAL = 10,
  IMAGETAG_FLOAT = 11,
  IMAGETAG_DOUBLE = 12,
};

/// One tag of an image, returned by `CIMAGETAG::GetInfo`.
///
/// Ownership: the caller owns the record and its value, which may be modified, until
/// `CIMAGETAG::ReleaseInfo`.
struct IMAGETAG_INFO {
  std::uint16_t tag;
  std::int16_t type;
  std::int16_t directory;
  /// The number of values; for ASCII and UNDEFINED, of bytes.
  std::int32_t count;
  /// The values in the machine's byte order, aligned for their type, followed by an uncounted NUL.
  /// At least sixteen bytes may be read; those past the value are zero.
  union {
    void *pointer;
    char *bytes;
    std::uint16_t *shorts;
    std::uint32_t *longs;
    std::int16_t *signedShorts;
    std::int32_t *signedLongs;
    float *floats;
    double *doubles;
  } value;
  /// Always zero.
  union {
    DateTimeRec date;
    std::int16_t pair[2];
  } extra;
};

} // namespace searchsystem
