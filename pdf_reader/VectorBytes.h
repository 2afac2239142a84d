#pragma once

#include "pdf_reader/ByteClasses.h"
#include "pdf_reader/HexString.h"

#include <cstddef>

#ifdef __SSE2__
#include <bit>
#include <emmintrin.h>
#endif

namespace searchsystem {

/// Loops that handle many bytes at once with SSE2, and the same loops without it. They read and
/// write up to `guardSize` bytes behind their data. Any thread.
namespace vectorBytes {

inline constexpr std::size_t guardSize = 32;

/// The end and the content of a line.
struct LineScan {
  const char *end; ///< its CR or LF
  bool hasComment; ///< a percent sign
  bool hasEither;  ///< one of two bytes
};

namespace plain {

/// Scans the line that begins at `line`; a CR or LF must end it.
[[nodiscard]] inline LineScan scanLine(const char *line, char one, char other) noexcept {
  LineScan scan{line, false, false};
  for (; classOf(*scan.end) != ByteClass::lineEnd; ++scan.end) {
    scan.hasComment |= *scan.end == '%';
    scan.hasEither |= *scan.end == one || *scan.end == other;
  }
  return scan;
}

/// Decodes pairs of hexadecimal digits up to the first other byte, which must exist, and moves
/// `digits` behind the last pair. Returns the number of bytes decoded.
inline std::size_t decodePairs(const char *&digits, char *out) noexcept {
  std::size_t size = 0;
  for (;; digits += 2) {
    const unsigned high = hexDigitValue(digits[0]);
    if (high == noHexDigit)
      return size;
    const unsigned low = hexDigitValue(digits[1]);
    if (low == noHexDigit)
      return size;
    out[size++] = static_cast<char>(high * 16 + low);
  }
}

} // namespace plain

#ifdef __SSE2__

inline constexpr std::size_t vectorSize = 16;

inline __m128i load(const char *bytes) noexcept {
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
}

inline __m128i equal(__m128i bytes, char byte) noexcept {
  return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte));
}

inline unsigned maskOf(__m128i bytes) noexcept {
  return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

inline LineScan scanLine(const char *line, char one, char other) noexcept {
  LineScan scan{line, false, false};
  unsigned comments = 0;
  unsigned others = 0;
  for (;; scan.end += vectorSize) {
    const __m128i bytes = load(scan.end);
    unsigned before = ~0U;
    const unsigned ends = maskOf(_mm_or_si128(equal(bytes, '\n'), equal(bytes, '\r')));
    if (ends != 0)
      before = (ends & (0 - ends)) - 1;
    comments |= maskOf(equal(bytes, '%')) & before;
    others |= maskOf(_mm_or_si128(equal(bytes, one), equal(bytes, other))) & before;
    if (ends == 0)
      continue;
    scan.end += std::countr_zero(ends);
    scan.hasComment = comments != 0;
    scan.hasEither = others != 0;
    return scan;
  }
}

/// The values of digits; 16 and more for other bytes.
inline __m128i valuesOf(__m128i digits) noexcept {
  // '0' to '9' become the ten highest values, which the saturation keeps apart from all others.
  const __m128i high =
      _mm_subs_epu8(_mm_sub_epi8(digits, _mm_set1_epi8('9' + 1)), _mm_set1_epi8(6));
  const __m128i decimals = _mm_sub_epi8(high, _mm_set1_epi8(static_cast<char>(0xF0)));
  const __m128i upper = _mm_and_si128(digits, _mm_set1_epi8(static_cast<char>(0xDF)));
  const __m128i letters = _mm_adds_epu8(_mm_sub_epi8(upper, _mm_set1_epi8('A')), _mm_set1_epi8(10));
  return _mm_min_epu8(decimals, letters);
}

/// The top bit of each value that is not a digit's.
inline __m128i otherThanDigits(__m128i values) noexcept {
  return _mm_adds_epu8(values, _mm_set1_epi8(0x7F - 0x0F));
}

/// The bytes that pairs of values form, in the lower bytes of eight words.
inline __m128i pairsOf(__m128i values) noexcept {
  return _mm_and_si128(_mm_or_si128(_mm_slli_epi16(values, 4), _mm_srli_epi16(values, 8)),
                       _mm_set1_epi16(0xFF));
}

inline std::size_t decodePairs(const char *&digits, char *out) noexcept {
  const char *const begin = digits;
  for (;;) {
    const __m128i first = valuesOf(load(digits));
    const __m128i second = valuesOf(load(digits + vectorSize));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out),
                     _mm_packus_epi16(pairsOf(first), pairsOf(second)));
    const __m128i others = otherThanDigits(first);
    const __m128i othersBehind = otherThanDigits(second);
    if (maskOf(_mm_or_si128(others, othersBehind)) != 0) {
      const unsigned mask = maskOf(others) | maskOf(othersBehind) << vectorSize;
      digits += std::countr_zero(mask) / 2 * std::ptrdiff_t{2};
      return static_cast<std::size_t>(digits - begin) / 2;
    }
    digits += 2 * vectorSize;
    out += vectorSize;
  }
}

#else
using plain::decodePairs;
using plain::scanLine;
#endif

} // namespace vectorBytes

} // namespace searchsystem
