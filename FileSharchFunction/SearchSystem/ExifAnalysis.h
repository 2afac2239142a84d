#pragma once

#include "platform/foundation/DateTimeRec.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/imagetag/CIMAGETAG.h"

#include <cstdint>
#include <memory>

/// The EXIF tags of one image file, as the strings that a search compares. All questions are
/// answered from the first bytes of the file, which are read once. Nothing is thrown: what fails
/// for lack of memory fails as if it were not there.
///
/// Ownership: counted; owns the bytes and the tag reader. Threads: one at a time.
class ExifAnalysis final : public NSObject {
public:
  /// The analysis of a JPEG or TIFF file; null when it cannot be read or has no EXIF tags. To be
  /// ended with `endExifAnalysis`.
  static Ref<ExifAnalysis> startExifAnalysisAtPath(const NSString *path) noexcept;

  /// The same for an item of which the caller may know more than its path.
  static Ref<ExifAnalysis> startExifAnalysisAtPath(FileItem &item) noexcept;

  /// The text of a tag, or null when the file has no such tag, it is empty or of another type than
  /// it should be, or the tag is none of these:
  /// - 0x9003, the date when the photograph was taken, or, when it has none, when it was digitized
  ///   (0x9004), as "2005/07/14 09:05:03". A text that is not a date gives "test", which no
  ///   conversion to a date accepts.
  /// - 0x010E, 0x010F, 0x0110, the description, and the maker and model of the camera.
  /// - 0x9286, the user's comment.
  Ref<const NSString> getExifInfo(std::uint32_t tag) noexcept;

  /// Closes the tags and gives back the bytes. Every tag is then absent.
  void endExifAnalysis() noexcept;

  /// The text of a user's comment, an UNDEFINED value that begins with the code of its characters
  /// (EXIF standard, 4.6.5); null when the code is not known, nothing follows it, or what follows
  /// is not valid. Of Unicode without a byte-order mark it writes one into the value, for
  /// little-endian.
  static Ref<const NSString> getUserComment(IMAGETAG_INFO *info) noexcept;

private:
  ExifAnalysis();
  ~ExifAnalysis() override = default;
  /// Throws `std::bad_alloc`.
  static Ref<ExifAnalysis> create();

  /// Loads the file and opens its tags: 1, or 0 when it cannot or there is no EXIF directory.
  char initCIMAGETAG(FileItem &item) noexcept;

  /// Puts the first bytes of the file into the slot: 0, or -43 when it cannot be read or is empty.
  static std::int16_t readDataHandle(FileItem &item, Ref<const NSData> *handle) noexcept;

  Ref<const NSString> dateText();
  Ref<const NSString> mainText(std::uint32_t tag);
  Ref<const NSString> comment() noexcept;

  Ref<const NSData> _exifData;
  std::unique_ptr<CIMAGETAG> _imageTag;
};

/// Takes apart a text of the form "YYYY:MM:DD HH:MM:SS", in which any characters may separate the
/// numbers; it writes NULs over these. A shorter text has empty numbers. 1 when year, month and day
/// are digits or nothing, and one of them is not 0; else 0. They need not be a date that exists. An
/// hour, minute or second that is no number is 0.
int FS_CheckDate(char *text, DateTimeRec *date) noexcept;

/// Copies the values of BYTE and RATIONAL tags, and of other types but ASCII the first number, to
/// `value`. Answers the size of one value in bytes; 0 when nothing was copied.
int FS_Exif_GetValueFromType(void *value, const IMAGETAG_INFO *info) noexcept;
