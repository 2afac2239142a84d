#pragma once

#include <array>
#include <cstdint>

namespace searchsystem {

/// The characters of the bytes of an encoding, as code points of the Basic Multilingual Plane;
/// `notAlone` for a byte that is no character by itself.
///
/// Threads: constant.
class SingleByteTable {
public:
  static constexpr char16_t notAlone = 0xFFFF;

  constexpr explicit SingleByteTable(const std::array<char16_t, 256> &characters) noexcept
      : characters_(characters) {}

  /// The character of `byte`, or `notAlone`.
  [[nodiscard]] constexpr char16_t characterOf(char byte) const noexcept {
    return characters_[static_cast<unsigned char>(byte)];
  }

  /// The byte of `character`, or -1.
  [[nodiscard]] int byteOf(std::int32_t character) const noexcept;

private:
  std::array<char16_t, 256> characters_;
};

/// Apple's set for Western languages, with the euro sign.
extern const SingleByteTable macRomanTable;

extern const SingleByteTable isoLatin1Table;

/// The characters of one byte in Shift-JIS, without and with what the Mac adds.
extern const SingleByteTable shiftJISSingleBytes;
extern const SingleByteTable macJapaneseSingleBytes;

} // namespace searchsystem
