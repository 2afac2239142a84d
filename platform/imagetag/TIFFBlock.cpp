#include "platform/imagetag/TIFFBlock.h"

#include <array>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::size_t headerSize = 8;
constexpr std::size_t entrySize = 12;

/// The type of an offset to a directory (TIFF Technical Note 1).
constexpr std::int16_t typeIFD = 13;

constexpr std::array<std::uint8_t, typeIFD + 1> typeSizes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};

/// The size in bytes of one value of a type, or 0 for an unknown type.
std::size_t sizeOfTIFFType(std::int16_t type) noexcept {
  return type >= 0 && type <= typeIFD ? typeSizes[static_cast<std::size_t>(type)] : 0;
}

} // namespace

std::size_t sizeOfTIFFNumber(std::int16_t type) noexcept {
  constexpr std::int16_t typeRational = 5, typeSignedRational = 10;
  return type == typeRational || type == typeSignedRational ? 4 : sizeOfTIFFType(type);
}

std::optional<TIFFBlock> TIFFBlock::open(ImageBytes bytes) noexcept {
  using namespace std::string_view_literals;
  const std::string_view header = bytes.part(0, headerSize);
  const bool isLittleEndian = header.starts_with("II*\0"sv);
  if (header.size() < headerSize || !(isLittleEndian || header.starts_with("MM\0*"sv)))
    return std::nullopt;
  TIFFBlock block(bytes, isLittleEndian);
  block.firstDirectory_ = block.number(header.substr(4, 4));
  return block;
}

std::string_view TIFFBlock::part(std::uint64_t offset, std::uint64_t size) const noexcept {
  if (size > bytes_.size() || offset > bytes_.size() - size)
    return {};
  const std::string_view bytes = bytes_.part(offset, size);
  return bytes.size() == size ? bytes : std::string_view();
}

std::uint32_t TIFFBlock::number(std::string_view bytes) const noexcept {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char byte = bytes[isLittleEndian_ ? bytes.size() - 1 - i : i];
    value = value << 8 | static_cast<unsigned char>(byte);
  }
  return value;
}

std::optional<TIFFBlock::Field> TIFFBlock::find(std::uint32_t directory,
                                                std::uint16_t tag) const noexcept {
  const std::string_view countBytes = part(directory, 2);
  if (countBytes.empty())
    return std::nullopt;
  std::string_view entries =
      bytes_.part(directory + std::size_t{2}, number(countBytes) * entrySize);
  char wanted[2] = {static_cast<char>(tag >> 8), static_cast<char>(tag & 0xFF)};
  if (isLittleEndian_)
    std::swap(wanted[0], wanted[1]);
  // Entries should be sorted by tag; some writers do not sort them.
  for (; entries.size() >= entrySize; entries.remove_prefix(entrySize))
    if (entries[0] == wanted[0] && entries[1] == wanted[1])
      return fieldOf(entries.substr(0, entrySize));
  return std::nullopt;
}

std::optional<TIFFBlock::Field> TIFFBlock::fieldOf(std::string_view entry) const noexcept {
  Field field{};
  field.type = static_cast<std::int16_t>(number(entry.substr(2, 2)));
  field.count = number(entry.substr(4, 4));
  const std::size_t typeSize = sizeOfTIFFType(field.type);
  if (typeSize == 0)
    return std::nullopt;
  const std::uint64_t size = std::uint64_t{field.count} * typeSize;
  // A value that fits is stored in place of its offset.
  const std::string_view place = entry.substr(8, 4);
  field.value = size <= place.size() ? place.substr(0, size) : part(number(place), size);
  if (field.value.size() != size)
    return std::nullopt;
  return field;
}

std::optional<std::uint32_t> TIFFBlock::directoryAt(std::uint32_t directory,
                                                    std::uint16_t tag) const noexcept {
  constexpr std::int16_t typeShort = 3, typeLong = 4;
  const std::optional<Field> field = find(directory, tag);
  if (!field || field->count != 1 ||
      (field->type != typeShort && field->type != typeLong && field->type != typeIFD))
    return std::nullopt;
  return number(field->value);
}

} // namespace searchsystem
