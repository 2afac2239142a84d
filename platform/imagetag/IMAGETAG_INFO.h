#pragma once

#include "platform/foundation/DateTimeRec.h"

#include <cstdint>

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

/// One tag of an image, as `CIMAGETAG::GetInfo` gives it.
///
/// Ownership: the record and its value belong to the caller until `CIMAGETAG::ReleaseInfo`; the
/// value may be written to.
struct IMAGETAG_INFO {
  std::uint16_t tag;
  std::int16_t type;
  std::int16_t directory;
  /// How many values there are; of ASCII and UNDEFINED, how many bytes.
  std::int32_t count;
  /// The values in the machine's byte order, aligned for their type. A NUL that is not counted
  /// follows, and at least sixteen bytes may be read, of which those past the value are zero.
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
  /// Not filled in: zero.
  union {
    DateTimeRec date;
    std::int16_t pair[2];
  } extra;
};
