#include "readers/photographs/BoxFile.h"

#include "readers/photographs/Boxes.h"
#include "readers/photographs/Decompressed.h"
#include "readers/photographs/HEIFItems.h"
#include "readers/photographs/TIFFBlock.h"
#include "readers/photographs/XMPPacket.h"

#include <string>
#include <string_view>

namespace searchsystem {

namespace {

constexpr std::size_t identifierSize = 16;
/// Of a camera's descriptions in a CR3 file, and of XMP (XMP standard, part 3, 1.2.7.1).
constexpr std::string_view canonIdentifier{
    "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48", identifierSize};
constexpr std::string_view xmpIdentifier{
    "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC", identifierSize};

bool hasIdentifier(const Box &box, std::string_view identifier) {
  return box.type == "uuid" && box.content.at(0, identifierSize) == identifier;
}

/// The directories of an Exif block, each in a TIFF structure of its own: those of the image and of
/// Exif. The maker's and that of the place say nothing that is looked for.
void readCanonBoxes(const ByteRange &range, PhotographReading &reading) {
  Boxes boxes(range);
  while (const auto box = boxes.next())
    if (box->type == "CMT1" || box->type == "CMT2")
      readTIFF(box->content, reading, TIFFUse::block);
}

void readMovie(const ByteRange &movie, PhotographReading &reading) {
  Boxes boxes(movie);
  while (const auto box = boxes.next())
    if (hasIdentifier(*box, canonIdentifier))
      readCanonBoxes(box->content.from(identifierSize), reading);
}

/// A box whose content, behind its kind, is compressed (ISO/IEC 18181-2, 9.3).
void readCompressedBox(const ByteRange &content, PhotographReading &reading) {
  const std::string kind(content.at(0, 4));
  if (kind != "Exif" && kind != "xml ")
    return;
  const std::string bytes =
      unbrotlied(content.from(4).read(ReadBudget::longestPacket), reading.budget);
  FileWindows memory(bytes, reading.budget);
  if (kind == "Exif")
    readOffsetExif(ByteRange(memory), reading);
  else
    readXMPPacket(bytes, reading, XMPPlace::file);
}

} // namespace

bool isBoxFile(const ByteRange &range) {
  constexpr std::string_view jpegXL{"\0\0\0\x0CJXL \r\n\x87\n", 12};
  return range.at(4, 4) == "ftyp" || range.at(0, jpegXL.size()) == jpegXL;
}

void readBoxFile(const ByteRange &file, PhotographReading &reading) {
  Boxes boxes(file);
  while (const auto box = boxes.next()) {
    if (box->type == "meta")
      readHEIFItems(box->content, file, reading);
    else if (box->type == "moov")
      readMovie(box->content, reading);
    else if (box->type == "Exif")
      readOffsetExif(box->content, reading);
    else if (box->type == "xml ")
      readXMPPacket(box->content.read(ReadBudget::longestPacket), reading, XMPPlace::file);
    else if (box->type == "brob")
      readCompressedBox(box->content, reading);
    else if (hasIdentifier(*box, xmpIdentifier))
      readXMPPacket(box->content.read(identifierSize, ReadBudget::longestPacket), reading,
                    XMPPlace::file);
  }
}

} // namespace searchsystem
