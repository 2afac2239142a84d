#pragma once

#include "platform/foundation/FileBeginning.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/imagetag/CIMAGETAG.h"
#include "platform/imagetag/ExifDate.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

namespace searchsystem {

/// The EXIF tags of one image file, as the strings that a search compares. All questions are
/// answered from the first bytes of the file, each of which is read once at most. Only `create`
/// throws: what cannot be read for lack of memory counts as absent.
///
/// Ownership: counted; owns the bytes, or the open file, and the tag reader. Threads: one at a
/// time.
class ExifAnalysis final : public NSObject {
public:
  /// An empty analysis. Throws `std::bad_alloc`.
  static Ref<ExifAnalysis> create();

  /// The analysis of a JPEG or TIFF file; null when it cannot be read or has no EXIF tags. End it
  /// with `endExifAnalysis`.
  static Ref<ExifAnalysis> startExifAnalysisAtPath(const NSString *path) noexcept;

  /// The same for an item whose listing or status the caller may have. Reads only what the
  /// requested tags need. Any thread may set `*isStopped`: from then on every read fails, and tags
  /// that have not been read are absent. The flag may be null; it must outlive the analysis.
  static Ref<ExifAnalysis>
  startExifAnalysisAtPath(FileItem &item, const std::atomic<char> *isStopped = nullptr) noexcept;

  /// The same for a file that is open, and stays so; `size` is the item's.
  static Ref<ExifAnalysis> startExifAnalysisOfFile(int file, std::uint64_t size,
                                                   const std::atomic<char> *isStopped) noexcept;

  /// Loads the first bytes of the file and opens its tags: 1, or 0 when that fails or there is no
  /// EXIF directory; the object is then unusable.
  char initCIMAGETAG(const NSString *path) noexcept;

  /// Puts the first 65,535 bytes of the file into the slot, read at once: 0, or -43, with nothing
  /// stored, when it cannot be read or is empty.
  static std::int16_t readDataHandle(const NSString *path, Ref<const NSData> *handle) noexcept;

  /// The text of a tag, or null when the file has no such tag, it is empty or of the wrong type, or
  /// the tag is none of these:
  /// - 0x9003, the date when the photograph was taken, or, when it has none, when it was digitized
  ///   (0x9004), as "2005/07/14 09:05:03"; "test", which is not a date, if the text is not one.
  /// - 0x010E, 0x010F, 0x0110, the description, and the maker and model of the camera.
  /// - 0x9286, the user's comment.
  Ref<const NSString> getExifInfo(std::uint32_t tag) noexcept;

  /// Closes the tags and releases the bytes. Every tag is then absent.
  void endExifAnalysis() noexcept;

  /// The text of a user's comment, an UNDEFINED value that begins with the code of its characters
  /// (EXIF standard, 4.6.5); null when the code is unknown or no valid text follows. Writes a
  /// little-endian byte-order mark into Unicode that has none.
  static Ref<const NSString> getUserComment(IMAGETAG_INFO *info) noexcept;

private:
  ExifAnalysis();
  ~ExifAnalysis() override = default;

  static Ref<ExifAnalysis> start(std::optional<FileBeginning> beginning) noexcept;

  /// Whether the opened tags have an EXIF directory; ends the analysis if not.
  bool hasExifDirectory() noexcept;

  Ref<const NSData> _exifData;
  /// The file, if only what the requested tags need is read.
  std::optional<FileBeginning> beginning_;
  std::unique_ptr<CIMAGETAG> _imageTag;
};

/// Copies to `value` all values of a BYTE or RATIONAL tag, the first of any other but ASCII.
/// Returns the size of one value in bytes; 0 when nothing was copied.
int FS_Exif_GetValueFromType(void *value, const IMAGETAG_INFO *info) noexcept;

} // namespace searchsystem
