#pragma once

#include "platform/foundation/CodePoints.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// For each byte of an encoding its character, a code point of the Basic Multilingual Plane, or
/// `notAlone` if the byte alone is not a character.
using SingleByteTable = std::array<char16_t, 256>;

inline constexpr char16_t notAlone = 0xFFFF;

/// The character of `byte`, or `notAlone`.
[[nodiscard]] constexpr char16_t characterOf(char byte, const SingleByteTable &table) noexcept {
  return table[static_cast<unsigned char>(byte)];
}

/// The byte of `character`, or -1.
[[nodiscard]] int byteOf(std::int32_t character, const SingleByteTable &table) noexcept;

/// `text` in an encoding that has the characters of `table` and others: `takeOther` takes one of
/// those from the beginning of the rest of the text, appends its bytes to the result, and returns
/// true, or else returns false. None if a character cannot be encoded. Throws `std::bad_alloc`.
template <class TakeOther>
std::optional<std::string> encodeBytes(std::string_view text, const SingleByteTable &table,
                                       TakeOther takeOther) {
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    if (takeOther(text, bytes))
      continue;
    const int byte = byteOf(takeCodePoint(text), table);
    if (byte < 0)
      return std::nullopt;
    bytes.push_back(static_cast<char>(byte));
  }
  return bytes;
}

/// Apple's set for Western languages, with the euro sign.
extern const SingleByteTable macRomanTable;

extern const SingleByteTable isoLatin1Table;

/// The characters of one byte in Shift-JIS, without and with what the Mac adds.
extern const SingleByteTable shiftJISSingleBytes;
extern const SingleByteTable macJapaneseSingleBytes;

} // namespace searchsystem
