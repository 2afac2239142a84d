#pragma once

#include "platform/imagetag/ImageBytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// A TIFF structure, of which there may be the beginning only. It is read nowhere but inside the
/// bytes given, and in time linear in their number, whatever it says about itself.
///
/// Ownership: borrows the bytes. Threads: one at a time.
class TIFFBlock {
public:
  /// None when `bytes` do not begin with a TIFF header of either byte order (TIFF 6.0, section 2).
  static std::optional<TIFFBlock> open(ImageBytes bytes) noexcept;

  struct Field {
    std::int16_t type;
    std::uint32_t count;
    /// The values, in the order of `isLittleEndian`.
    std::string_view value;
  };

  /// A tag of the directory at the given place; none when the directory has no such tag, its type
  /// is not known, or its value is not inside the bytes.
  [[nodiscard]] std::optional<Field> find(std::uint32_t directory,
                                          std::uint16_t tag) const noexcept;

  /// Where the first directory is said to be.
  [[nodiscard]] std::uint32_t firstDirectory() const noexcept { return firstDirectory_; }

  /// Where the directory is said to be that a tag of another one leads to.
  [[nodiscard]] std::optional<std::uint32_t> directoryAt(std::uint32_t directory,
                                                         std::uint16_t tag) const noexcept;

  [[nodiscard]] bool isLittleEndian() const noexcept { return isLittleEndian_; }

private:
  TIFFBlock(ImageBytes bytes, bool isLittleEndian) noexcept
      : bytes_(bytes), isLittleEndian_(isLittleEndian) {}

  /// The unsigned number that `bytes` are, of which there are four at most.
  [[nodiscard]] std::uint32_t number(std::string_view bytes) const noexcept;

  /// The bytes from `offset` on, `size` of them or none.
  [[nodiscard]] std::string_view part(std::uint64_t offset, std::uint64_t size) const noexcept;

  [[nodiscard]] std::optional<Field> fieldOf(std::string_view entry) const noexcept;

  ImageBytes bytes_;
  bool isLittleEndian_;
  std::uint32_t firstDirectory_ = 0;
};

/// The size in bytes of one value of a type, or 0 for an unknown type.
[[nodiscard]] std::size_t sizeOfTIFFType(std::int16_t type) noexcept;

/// The size in bytes of the numbers that a value of a known type is made of.
[[nodiscard]] std::size_t sizeOfTIFFNumber(std::int16_t type) noexcept;
