#pragma once

#include <cstddef>

/// Loops over many bytes at a time, with SSE2 where there is such, and the same without. They read
/// up to `guardSize` bytes behind what they look at. Any thread.
namespace vectorBytes {

inline constexpr std::size_t guardSize = 32;

/// What stands in a line.
struct LineScan {
  const char *end; ///< its CR or LF
  bool hasComment; ///< a percent sign
  bool hasEither;  ///< one of the bytes that were asked for
};

/// Looks over the line that begins at `line`; a CR or LF has to stand behind it.
[[nodiscard]] LineScan scanLine(const char *line, char one, char other) noexcept;
[[nodiscard]] LineScan scanLinePlainly(const char *line, char one, char other) noexcept;

/// Decodes pairs of hexadecimal digits from `digits` on up to the first byte that is none, and
/// moves `digits` behind the last pair. Gives how many bytes were decoded. Something else than a
/// digit has to stand behind the digits, and `out` needs room for `guardSize` bytes more.
std::size_t decodePairs(const char *&digits, char *out) noexcept;
std::size_t decodePairsPlainly(const char *&digits, char *out) noexcept;

} // namespace vectorBytes
