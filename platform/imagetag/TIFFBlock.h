#pragma once

#include "platform/imagetag/ImageBytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace searchsystem {

/// A TIFF structure, possibly truncated. Never reads outside the given bytes, and takes time linear
/// in their number whatever they contain.
///
/// Ownership: borrows the bytes. Threads: one at a time.
class TIFFBlock {
public:
  /// None unless `bytes` begin with a TIFF header of either byte order (TIFF 6.0, section 2).
  static std::optional<TIFFBlock> open(ImageBytes bytes) noexcept;

  struct Field {
    std::int16_t type;
    std::uint32_t count;
    /// The values, in the block's byte order.
    std::string_view value;
  };

  /// A tag of the directory at that offset; none if the directory lacks it, its type is unknown, or
  /// its value is not inside the bytes.
  [[nodiscard]] std::optional<Field> find(std::uint32_t directory,
                                          std::uint16_t tag) const noexcept;

  /// The stated offset of the first directory.
  [[nodiscard]] std::uint32_t firstDirectory() const noexcept { return firstDirectory_; }

  /// The stated offset of the directory that a tag of another one refers to.
  [[nodiscard]] std::optional<std::uint32_t> directoryAt(std::uint32_t directory,
                                                         std::uint16_t tag) const noexcept;

  [[nodiscard]] bool isLittleEndian() const noexcept { return isLittleEndian_; }

private:
  TIFFBlock(ImageBytes bytes, bool isLittleEndian) noexcept
      : bytes_(bytes), isLittleEndian_(isLittleEndian) {}

  /// The unsigned number in at most four bytes.
  [[nodiscard]] std::uint32_t number(std::string_view bytes) const noexcept;

  /// The `size` bytes from `offset` on, or none.
  [[nodiscard]] std::string_view part(std::uint64_t offset, std::uint64_t size) const noexcept;

  [[nodiscard]] std::optional<Field> fieldOf(std::string_view entry) const noexcept;

  ImageBytes bytes_;
  bool isLittleEndian_;
  std::uint32_t firstDirectory_ = 0;
};

/// The size in bytes of the numbers in a value of a known type.
[[nodiscard]] std::size_t sizeOfTIFFNumber(std::int16_t type) noexcept;

} // namespace searchsystem
