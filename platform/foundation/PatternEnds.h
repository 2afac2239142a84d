#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace searchsystem {

/// The first and last bytes of a pattern, to find where it may occur in a text. Each is met by the
/// bytes that equal it once the bits of its case are set. Any thread.
struct PatternEnds {
  char first, firstCase, last, lastCase;

  static constexpr std::size_t blockSize = 16;

  /// A bit for each of the `blockSize` positions from `firsts` on, the lowest for the first: set if
  /// the pattern may begin there. `lasts` is where it would end if it began at `firsts`.
  [[nodiscard]] std::uint32_t beginsPlainly(const char *firsts, const char *lasts) const noexcept {
    std::uint32_t begins = 0;
    for (std::size_t i = 0; i < blockSize; ++i)
      if (static_cast<char>(firsts[i] | firstCase) == first &&
          static_cast<char>(lasts[i] | lastCase) == last)
        begins |= 1U << i;
    return begins;
  }

  /// The same, with vector instructions where the processor has them.
  [[nodiscard]] std::uint32_t begins(const char *firsts, const char *lasts) const noexcept {
#ifdef __SSE2__
    const auto meets = [](const char *bytes, char caseBits, char end) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
      return _mm_cmpeq_epi8(_mm_or_si128(block, _mm_set1_epi8(caseBits)), _mm_set1_epi8(end));
    };
    return static_cast<std::uint32_t>(_mm_movemask_epi8(
        _mm_and_si128(meets(firsts, firstCase, first), meets(lasts, lastCase, last))));
#else
    return beginsPlainly(firsts, lasts);
#endif
  }
};

} // namespace searchsystem
