#pragma once

#include "testing/PhotoFile.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace searchsystem {

/// Writers of the containers in which photographs have their descriptions. Nothing is checked, so
/// that damaged files can be written, too.

inline std::string bigEndian(std::uint64_t value, std::size_t size) {
  return PhotoTags(ByteOrder::Big).number(value, size);
}

inline std::string littleEndian(std::uint64_t value, std::size_t size) {
  return PhotoTags(ByteOrder::Little).number(value, size);
}

inline std::string evened(std::string bytes) {
  bytes.resize(bytes.size() + bytes.size() % 2);
  return bytes;
}

/// A packet with properties as attributes and as elements.
inline std::string xmpPacket(std::string_view elements, std::string_view attributes = {}) {
  return "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta "
         "xmlns:x='adobe:ns:meta/'><rdf:RDF "
         "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' "
         "xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:xmp='http://ns.adobe.com/xap/1.0/' "
         "xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/' "
         "xmlns:exif='http://ns.adobe.com/exif/1.0/' xmlns:tiff='http://ns.adobe.com/tiff/1.0/' " +
         std::string(attributes) + ">" + std::string(elements) +
         "</rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end='w'?>";
}

inline std::string titlePacket(std::string_view title) {
  return xmpPacket("<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>" + std::string(title) +
                   "</rdf:li></rdf:Alt></dc:title>");
}

inline std::string iptcDataSet(int record, int number, std::string_view value) {
  return std::string{'\x1C', static_cast<char>(record), static_cast<char>(number)} +
         bigEndian(value.size(), 2) + std::string(value);
}

inline std::string photoshopResource(int identifier, std::string_view data) {
  return "8BIM" + bigEndian(static_cast<std::uint64_t>(identifier), 2) + std::string(2, '\0') +
         bigEndian(data.size(), 4) + evened(std::string(data));
}

inline std::string xmpSegment(std::string_view packet) {
  return jpegSegment(0xE1, std::string("http://ns.adobe.com/xap/1.0/\0", 29).append(packet));
}

inline std::string extendedSegment(std::string_view name, std::uint32_t offset,
                                   std::string_view part) {
  return jpegSegment(0xE1, std::string("http://ns.adobe.com/xmp/extension/\0", 35)
                               .append(name)
                               .append(bigEndian(9999, 4))
                               .append(bigEndian(offset, 4))
                               .append(part));
}

inline std::string photoshopSegment(std::string_view resources) {
  return jpegSegment(0xED, std::string("Photoshop 3.0\0", 14).append(resources));
}

inline std::string pngChunk(std::string_view kind, std::string_view data) {
  return bigEndian(data.size(), 4) + std::string(kind) + std::string(data) + "\1\2\3\4";
}

inline std::string pngFile(std::initializer_list<std::string> chunks) {
  std::string bytes = "\x89PNG\r\n\x1A\n" + pngChunk("IHDR", std::string(13, '\1'));
  for (const std::string &chunk : chunks)
    bytes += chunk;
  return bytes + pngChunk("IEND", "");
}

inline std::string riffChunk(std::string_view kind, std::string_view data) {
  return std::string(kind) + littleEndian(data.size(), 4) + evened(std::string(data));
}

inline std::string webpFile(std::string_view chunks) {
  return "RIFF" + littleEndian(chunks.size() + 4, 4) + "WEBP" + std::string(chunks);
}

inline std::string photoshopFile(std::string_view resources) {
  return "8BPS" + bigEndian(1, 2) + std::string(20, '\0') + bigEndian(3, 4) + "abc" +
         bigEndian(resources.size(), 4) + std::string(resources) + "image";
}

inline std::string box(std::string_view type, std::string_view content) {
  return bigEndian(content.size() + 8, 4) + std::string(type) + std::string(content);
}

/// With a version and flags.
inline std::string fullBox(std::string_view type, int version, std::string_view content) {
  return box(type, bigEndian(static_cast<std::uint64_t>(version), 1) + std::string(3, '\0') +
                       std::string(content));
}

struct HEIFItem {
  std::uint16_t identifier;
  std::string kind;
  /// What of the file's data it is: `idat` if it lies there.
  std::string data;
  bool isInIdat = false;
  /// Another item that it describes.
  std::uint16_t describes = 1;
};

/// The number says how far behind it the block begins.
inline std::string offsetExif(std::string_view tiff, std::string_view between = {}) {
  return bigEndian(between.size(), 4) + std::string(between) + std::string(tiff);
}

/// A HEIF file whose item 1 is the primary image.
inline std::string heifFile(std::initializer_list<HEIFItem> items) {
  const auto withData = [&](std::size_t dataBegin) {
    std::string infos = fullBox("infe", 2, bigEndian(1, 2) + bigEndian(0, 2) + "hvc1" + '\0');
    std::string references, locations, idat, data;
    for (const HEIFItem &item : items) {
      infos += fullBox("infe", 2,
                       bigEndian(item.identifier, 2) + bigEndian(0, 2) + item.kind + '\0' +
                           (item.kind == "mime" ? std::string("application/rdf+xml\0", 20) : ""));
      references += box("cdsc", bigEndian(item.identifier, 2) + bigEndian(1, 2) +
                                    bigEndian(item.describes, 2));
      std::string &place = item.isInIdat ? idat : data;
      locations += bigEndian(item.identifier, 2) + bigEndian(item.isInIdat ? 1 : 0, 2) +
                   bigEndian(0, 2) + bigEndian(1, 2) +
                   bigEndian((item.isInIdat ? 0 : dataBegin) + place.size(), 4) +
                   bigEndian(item.data.size(), 4);
      place += item.data;
    }
    const std::string meta =
        fullBox("hdlr", 0, std::string(4, '\0') + "pict") + fullBox("pitm", 0, bigEndian(1, 2)) +
        fullBox("iinf", 0, bigEndian(items.size() + 1, 2) + infos) +
        fullBox("iref", 0, references) +
        fullBox("iloc", 1, bigEndian(0x4400, 2) + bigEndian(items.size(), 2) + locations) +
        box("idat", idat);
    const std::string head =
        box("ftyp", "heic" + bigEndian(0, 4) + "mif1") + fullBox("meta", 0, meta);
    return std::pair(head + bigEndian(data.size() + 8, 4) + "mdat", data);
  };
  const std::size_t dataBegin = withData(0).first.size();
  const auto [head, data] = withData(dataBegin);
  return head + data;
}

inline std::string jpegXLFile(std::string_view boxes) {
  return std::string("\0\0\0\x0CJXL \r\n\x87\n", 12) + box("ftyp", "jxl \0\0\0\0jxl ") +
         std::string(boxes);
}

inline std::string cr3File(std::string_view imageTags, std::string_view exifTags) {
  const std::string identifier = "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48";
  return box("ftyp", "crx ") +
         box("moov", box("uuid", identifier + box("CNCV", "CanonCR3") + box("CMT1", imageTags) +
                                     box("CMT2", exifTags)));
}

inline std::string rafFile(std::string_view jpeg) {
  std::string header = "FUJIFILMCCD-RAW 0201";
  header.resize(84);
  header += bigEndian(100, 4) + bigEndian(jpeg.size(), 4);
  header.resize(100);
  return header + std::string(jpeg);
}

/// A heap of CIFF: tags and their data.
inline std::string ciffHeap(std::initializer_list<std::pair<std::uint16_t, std::string>> records) {
  std::string data, directory = littleEndian(records.size(), 2);
  for (const auto &[tag, bytes] : records) {
    directory +=
        littleEndian(tag, 2) + littleEndian(bytes.size(), 4) + littleEndian(data.size(), 4);
    data += bytes;
  }
  return data + directory + littleEndian(data.size(), 4);
}

inline std::string crwFile(std::string_view heap) {
  return "II" + littleEndian(14, 4) + "HEAPCCDR" + std::string(heap);
}

/// A BigTIFF file with one text.
inline std::string bigTIFFFile(ByteOrder order, std::uint16_t tag, std::string_view text) {
  const PhotoTags numbers(order);
  const auto number = [&](std::uint64_t value, std::size_t size) {
    return numbers.number(value, size);
  };
  return (order == ByteOrder::Little ? "II" : "MM") + number(43, 2) + number(8, 2) + number(0, 2) +
         number(16, 8) + number(1, 8) + number(tag, 2) + number(PhotoTags::ASCII, 2) +
         number(text.size() + 1, 8) + number(52, 8) + number(0, 8) + std::string(text) + '\0';
}

} // namespace searchsystem
