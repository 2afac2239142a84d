#include "pdf_reader/VectorBytes.h"

#include "pdf_reader/ByteClasses.h"
#include "pdf_reader/HexString.h"

#ifdef __SSE2__
#include <bit>
#include <emmintrin.h>
#endif

namespace vectorBytes {

LineScan scanLinePlainly(const char *line, char one, char other) noexcept {
  LineScan scan{line, false, false};
  for (; classOf(*scan.end) != ByteClass::lineEnd; ++scan.end) {
    scan.hasComment |= *scan.end == '%';
    scan.hasEither |= *scan.end == one || *scan.end == other;
  }
  return scan;
}

std::size_t decodePairsPlainly(const char *&digits, char *out) noexcept {
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

#ifdef __SSE2__

namespace {

constexpr std::size_t vectorSize = 16;

__m128i load(const char *bytes) noexcept {
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
}

__m128i equal(__m128i bytes, char byte) noexcept {
  return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte));
}

unsigned maskOf(__m128i bytes) noexcept { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); }

/// All bits where the bytes less `first` are `most` at most.
__m128i inRange(__m128i bytes, char first, char most) noexcept {
  const __m128i rest = _mm_sub_epi8(bytes, _mm_set1_epi8(first));
  return _mm_cmpeq_epi8(_mm_subs_epu8(rest, _mm_set1_epi8(most)), _mm_setzero_si128());
}

} // namespace

LineScan scanLine(const char *line, char one, char other) noexcept {
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

namespace {

/// The bytes that eight pairs of digits stand for, in the lower bytes of eight words.
struct Pairs {
  __m128i bytes;
  __m128i areDigits; ///< all bits for each that is one

  explicit Pairs(const char *digits) noexcept {
    const __m128i read = load(digits);
    const __m128i areLetters = inRange(_mm_or_si128(read, _mm_set1_epi8(0x20)), 'a', 5);
    const __m128i values = _mm_add_epi8(_mm_and_si128(read, _mm_set1_epi8(0x0F)),
                                        _mm_and_si128(areLetters, _mm_set1_epi8(9)));
    bytes = _mm_and_si128(_mm_or_si128(_mm_slli_epi16(values, 4), _mm_srli_epi16(values, 8)),
                          _mm_set1_epi16(0xFF));
    areDigits = _mm_or_si128(inRange(read, '0', 9), areLetters);
  }
};

} // namespace

std::size_t decodePairs(const char *&digits, char *out) noexcept {
  constexpr unsigned all = (1U << vectorSize) - 1;
  const char *const begin = digits;
  for (;;) {
    const Pairs first(digits);
    const Pairs second(digits + vectorSize);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm_packus_epi16(first.bytes, second.bytes));
    if (maskOf(_mm_and_si128(first.areDigits, second.areDigits)) != all) {
      const unsigned are = maskOf(first.areDigits) | maskOf(second.areDigits) << vectorSize;
      digits += std::countr_one(are) / 2 * 2;
      return static_cast<std::size_t>(digits - begin) / 2;
    }
    digits += 2 * vectorSize;
    out += vectorSize;
  }
}

#else

LineScan scanLine(const char *line, char one, char other) noexcept {
  return scanLinePlainly(line, one, other);
}

std::size_t decodePairs(const char *&digits, char *out) noexcept {
  return decodePairsPlainly(digits, out);
}

#endif

} // namespace vectorBytes
