#pragma once

#include "platform/imagetag/IMAGETAG_INFO.h"
#include "platform/imagetag/ImageBytes.h"
#include "platform/imagetag/TIFFBlock.h"

#include <cstdint>
#include <optional>

namespace searchsystem {

/// A file record, not used here.
struct FSSpec;

/// Reads the tags of an image: of the Exif block of a JPEG file, or of a TIFF file.
///
/// Never reads outside the given bytes, and takes time linear in their number whatever they
/// contain. Never throws. Ownership: borrows the bytes, or the file, from `CreateField` to
/// `CloseField`. Threads: one at a time.
class CIMAGETAG {
public:
  CIMAGETAG() noexcept = default;
  virtual ~CIMAGETAG() = default;
  CIMAGETAG(const CIMAGETAG &) = delete;
  CIMAGETAG &operator=(const CIMAGETAG &) = delete;

  /// The format found.
  enum Format : std::int16_t { NoFormat = 0, TIFF = 1, JPEG = 2 };

  /// Opens the tags in the first `length` bytes of an image. 1 if there are any, else 0. `file` is
  /// ignored: pass null. Pointers that are not null receive the format, the start of the block that
  /// the tags' offsets refer to, its size, and the EXIF directory's offset in it, 0 if there is
  /// none.
  int CreateField(const FSSpec *file, const void *bytes, std::uint32_t length, std::int16_t *format,
                  std::uint32_t *base, std::uint32_t *size, std::uint32_t *exifDirectory) noexcept;

  /// The same for the beginning of an image's file, which is read only as far as needed.
  int CreateField(FileBeginning &file) noexcept;

  /// A tag of the first image's main directory, 0, or of its EXIF directory, 1; null if it is
  /// missing, its value is not entirely inside the bytes, or memory is short. `size`, unless null,
  /// receives the value's size in bytes. Release it with `ReleaseInfo`.
  IMAGETAG_INFO *GetInfo(std::int16_t directory, std::uint32_t tag,
                         std::uint32_t *size) const noexcept;

  /// Frees a record and its value; null is ignored.
  static void ReleaseInfo(IMAGETAG_INFO *info) noexcept;

  /// Forgets the bytes. Records stay valid.
  void CloseField() noexcept;

private:
  /// Finds the tags; returns the block with them, if any.
  std::optional<ImageBytes> open(ImageBytes image) noexcept;

  std::optional<TIFFBlock> tags_;
  std::optional<std::uint32_t> exifDirectory_;
};

} // namespace searchsystem
