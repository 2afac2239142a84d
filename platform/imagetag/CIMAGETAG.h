#pragma once

#include "platform/imagetag/IMAGETAG_INFO.h"
#include "platform/imagetag/ImageBytes.h"
#include "platform/imagetag/TIFFBlock.h"

#include <cstdint>
#include <optional>

/// A file, as images are named by other means than their bytes.
struct FSSpec;

/// Reads the tags of an image: of the Exif block of a JPEG file, or of a TIFF file.
///
/// It reads inside the bytes that it was given and nowhere else, and takes a time that is linear in
/// them whatever they say. It throws nothing.
/// Ownership: borrows the bytes, or the file, from `CreateField` to `CloseField`. Threads: one at a
/// time.
class CIMAGETAG {
public:
  CIMAGETAG() noexcept = default;
  virtual ~CIMAGETAG() = default;
  CIMAGETAG(const CIMAGETAG &) = delete;
  CIMAGETAG &operator=(const CIMAGETAG &) = delete;

  /// What the bytes turned out to be.
  enum Format : std::int16_t { NoFormat = 0, TIFF = 1, JPEG = 2 };

  /// Opens the tags in the first `length` bytes of an image. 1 when there are any, else 0. `file`
  /// is not looked at: pass null. Told, where the pointer is not null: the format; where in the
  /// bytes the tags' offsets are counted from; how many bytes there are from there on; where from
  /// there the EXIF directory is, 0 when there is none.
  int CreateField(const FSSpec *file, const void *bytes, std::uint32_t length, std::int16_t *format,
                  std::uint32_t *base, std::uint32_t *size, std::uint32_t *exifDirectory) noexcept;

  /// The same for the beginning of an image's file, which is read as far as its tags are asked for.
  int CreateField(FileBeginning &file) noexcept;

  /// A tag of the main directory of the (first) image, 0, or of its EXIF directory, 1; null when it
  /// is not there, its value is not whole inside the bytes, or memory is short. `size`, where not
  /// null, is told the value's size in bytes. To be given back with `ReleaseInfo`.
  IMAGETAG_INFO *GetInfo(std::int16_t directory, std::uint32_t tag,
                         std::uint32_t *size) const noexcept;

  /// Frees a record and its value; null is ignored.
  static void ReleaseInfo(IMAGETAG_INFO *info) noexcept;

  /// Forgets the bytes. Records that were given out stay valid.
  void CloseField() noexcept;

private:
  /// Where the tags are, if there are any.
  std::optional<ImageBytes> open(ImageBytes image) noexcept;
  bool openBlock(ImageBytes block) noexcept;

  std::optional<TIFFBlock> tags_;
  std::optional<std::uint32_t> exifDirectory_;
};
