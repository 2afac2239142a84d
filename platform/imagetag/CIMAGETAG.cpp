#include "platform/imagetag/CIMAGETAG.h"

#include "platform/foundation/TryTwice.h"
#include "platform/imagetag/JPEGSegments.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>

namespace searchsystem {

namespace {

/// The EXIF directory's offset (EXIF standard, 4.6.3).
constexpr std::uint16_t tagExifIFD = 0x8769;

/// The offset of the value, which follows its record.
constexpr std::size_t valueOffset = (sizeof(IMAGETAG_INFO) + alignof(std::max_align_t) - 1) /
                                    alignof(std::max_align_t) * alignof(std::max_align_t);

constexpr std::size_t leastRoom = 16;

template <class T> void store(T *where, T value) noexcept {
  if (where != nullptr)
    *where = value;
}

/// Reverses the byte order of each number of a copied value.
void swapBytes(char *value, std::size_t size, std::size_t numberSize) noexcept {
  for (std::size_t i = 0; i + numberSize <= size; i += numberSize)
    std::reverse(value + i, value + i + numberSize);
}

} // namespace

std::optional<ImageBytes> CIMAGETAG::open(ImageBytes image) noexcept {
  CloseField();
  const bool isJPEG = JPEGSegments::isJPEG(image);
  JPEGSegments segments(image);
  std::optional<ImageBytes> block = isJPEG ? segments.nextExif() : image;
  while (block && !(tags_ = TIFFBlock::open(*block)))
    block = isJPEG ? segments.nextExif() : std::nullopt;
  if (tags_)
    exifDirectory_ = tags_->directoryAt(tags_->firstDirectory(), tagExifIFD);
  return block;
}

int CIMAGETAG::CreateField(FileBeginning &file) noexcept { return open(ImageBytes(file)) ? 1 : 0; }

int CIMAGETAG::CreateField(const FSSpec * /*file*/, const void *bytes, std::uint32_t length,
                           std::int16_t *format, std::uint32_t *base, std::uint32_t *size,
                           std::uint32_t *exifDirectory) noexcept {
  const ImageBytes image(
      std::string_view(static_cast<const char *>(bytes), bytes != nullptr ? length : 0));
  const std::optional<ImageBytes> block = open(image);
  store<std::int16_t>(format, !block ? NoFormat : JPEGSegments::isJPEG(image) ? JPEG : TIFF);
  store(base, block ? static_cast<std::uint32_t>(block->begin()) : 0);
  store(size, block ? static_cast<std::uint32_t>(block->size()) : 0);
  store(exifDirectory, exifDirectory_.value_or(0));
  return block ? 1 : 0;
}

IMAGETAG_INFO *CIMAGETAG::GetInfo(std::int16_t directory, std::uint32_t tag,
                                  std::uint32_t *size) const noexcept {
  store<std::uint32_t>(size, 0);
  if (!tags_ || tag > 0xFFFF || directory < 0 || directory > 1 ||
      (directory == 1 && !exifDirectory_))
    return nullptr;
  const std::uint32_t place = directory == 1 ? *exifDirectory_ : tags_->firstDirectory();
  const auto field = tags_->find(place, static_cast<std::uint16_t>(tag));
  if (!field || field->count > std::numeric_limits<std::int32_t>::max())
    return nullptr;
  const std::size_t room = std::max(field->value.size() + 1, leastRoom);
  void *memory = nullptr;
  if (!tryTwice([&] { memory = ::operator new(valueOffset + room); }))
    return nullptr;
  auto *const info = ::new (memory) IMAGETAG_INFO{};
  info->tag = static_cast<std::uint16_t>(tag);
  info->type = field->type;
  info->directory = directory;
  info->count = static_cast<std::int32_t>(field->count);
  info->value.bytes = static_cast<char *>(memory) + valueOffset;
  char *const end = std::copy(field->value.begin(), field->value.end(), info->value.bytes);
  std::memset(end, 0, room - field->value.size());
  const std::size_t numberSize = sizeOfTIFFNumber(field->type);
  if (numberSize > 1 && tags_->isLittleEndian() != (std::endian::native == std::endian::little))
    swapBytes(info->value.bytes, field->value.size(), numberSize);
  store(size, static_cast<std::uint32_t>(field->value.size()));
  return info;
}

void CIMAGETAG::ReleaseInfo(IMAGETAG_INFO *info) noexcept { ::operator delete(info); }

void CIMAGETAG::CloseField() noexcept {
  tags_.reset();
  exifDirectory_.reset();
}

} // namespace searchsystem
