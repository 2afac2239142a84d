#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace searchsystem {

/// The first and last bytes of a pattern, in both cases, to find where it may occur in a text. Any
/// thread.
struct PatternEnds {
  char first, otherFirst, last, otherLast;

  static constexpr std::size_t blockSize = 16;

  /// A bit for each of the `blockSize` positions from `firsts` on, the lowest for the first: set if
  /// the pattern may begin there. `lasts` is where it would end if it began at `firsts`.
  [[nodiscard]] std::uint32_t beginsPlainly(const char *firsts, const char *lasts) const noexcept {
    std::uint32_t begins = 0;
    for (std::size_t i = 0; i < blockSize; ++i)
      if ((firsts[i] == first || firsts[i] == otherFirst) &&
          (lasts[i] == last || lasts[i] == otherLast))
        begins |= 1U << i;
    return begins;
  }

  /// The same, with vector instructions where the processor has them.
  [[nodiscard]] std::uint32_t begins(const char *firsts, const char *lasts) const noexcept {
#ifdef __SSE2__
    const auto isEither = [](const char *bytes, char one, char other) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
      return _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8(one)),
                          _mm_cmpeq_epi8(block, _mm_set1_epi8(other)));
    };
    return static_cast<std::uint32_t>(_mm_movemask_epi8(
        _mm_and_si128(isEither(firsts, first, otherFirst), isEither(lasts, last, otherLast))));
#else
    return beginsPlainly(firsts, lasts);
#endif
  }
};

} // namespace searchsystem
