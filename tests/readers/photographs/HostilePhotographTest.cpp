#include "testing/PhotographContainers.h"
#include "testing/PhotographOf.h"

#include <gtest/gtest.h>

#include <string>

namespace searchsystem {
namespace {

using namespace std::string_literals;

std::string times(int count, const std::string &text) {
  std::string all;
  for (int i = 0; i < count; ++i)
    all += text;
  return all;
}

PhotoTags photo() { return PhotoTags(ByteOrder::Little); }

TEST(HostilePhotographTest, PassesOverWhatLies) {
  const struct {
    const char *name;
    std::string file, read;
  } rows[] = {
      {"a text beyond the end",
       photo().fieldAt(0, 0x010E, 2, 0xFFFFFFFF, 8).text(0, 0x013B, "me").tiff(), "Exif Artist=me"},
      {"a text at the last offset", photo().fieldAt(0, 0x010E, 2, 9, 0xFFFFFFFF).tiff(), ""},
      {"a directory of directories", photo().fieldAt(0, 0x8769, 4, 0x20000000, 8).tiff(), ""},
      {"a directory in itself", photo().fieldAt(0, 0x8769, 4, 1, 8).text(0, 0x013B, "me").tiff(),
       "Exif Artist=me"},
      {"the first directory beyond the end", "II*\0\xFF\xFF\xFF\xFF"s, ""},
      // The file's beginning, taken for an offset, leads to another one.
      {"the first directory beyond the end of a large file",
       "II*\0\xFF\xFF\xFF\xFF"s + std::string(0x2A4949 - 8, '\0') +
           "\1\0\x0E\1\2\0\2\0\0\0x\0\0\0\0\0\0\0"s,
       ""},
      {"the first directory in the header", "II*\0\0\0\0\0"s, ""},
      {"a count beyond the end", "II*\0\x08\0\0\0\xFF\xFF\x0E\1\2\0\2\0\0\0x\0\0\0"s,
       "Exif ImageDescription=x"},
      {"BigTIFF, a directory at the last offset", "II+\0\x08\0\0\0"s + std::string(8, '\xFF'), ""},
      {"a segment beyond the end", "\xFF\xD8\xFF\xFE\xFF\xFFhello", "JPEG Comment=hello"},
      {"a segment that is too short", "\xFF\xD8\xFF\xFE\0\1hello"s, ""},
      {"a chunk beyond the end", "\x89PNG\r\n\x1A\n\xFF\xFF\xFF\xFFtEXtTitle\0sea"s,
       "PNG Title=sea"},
      {"a box that is too short", jpegXLFile(bigEndian(4, 4) + "Exif"), ""},
      {"a box that is too long",
       jpegXLFile("\0\0\0\1xml \xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s + titlePacket("sea")),
       "XMP dc:title=sea"},
      {"a heap in itself", crwFile("\1\0\0\x30\xFF\0\0\0\0\0\0\0\0\0\0\0"s), ""},
      {"a keyword without an end", pngFile({pngChunk("tEXt", std::string(5000, 'k'))}), ""},
      {"no stream of zlib", pngFile({pngChunk("zTXt", "Title\0\0no"s)}), ""},
      {"a resource beyond the end",
       photoshopFile("8BIM\x04\x04\0\0\xFF\xFF\xFF\xFF"s + iptcDataSet(2, 90, "x")), "IPTC City=x"},
  };
  for (const auto &[name, file, read] : rows)
    EXPECT_EQ(descriptionOf(file), read) << name;
}

// Each would take hours, or all memory, if its file were believed.
TEST(HostilePhotographTest, EndsWithinItsLimits) {
  std::string chain = "II*\0\x08\0\0\0"s;
  for (std::uint32_t i = 0; i < 5000; ++i)
    chain += littleEndian(0, 2) + littleEndian(chain.size() + 6, 4);
  const std::string megabyte(1 << 20, 'x');
  std::string entries;
  for (int i = 0; i < 200; ++i)
    entries += littleEndian(0x010E + (i & 1), 2) + littleEndian(2, 2) +
               littleEndian(megabyte.size(), 4) + littleEndian(3000, 4);
  std::string overlapping = "II*\0\x08\0\0\0"s + littleEndian(200, 2) + entries;
  overlapping.resize(3000);
  std::string nested = iptcDataSet(2, 90, "x");
  for (int i = 0; i < 20; ++i)
    nested = PhotoTags(ByteOrder::Little)
                 .field(0, 0x8649, PhotoTags::Byte, static_cast<std::uint32_t>(nested.size() + 12),
                        photoshopResource(i == 0 ? 1028 : 1058, nested))
                 .tiff();
  std::string attributes;
  for (int i = 0; i < 20000; ++i)
    attributes += " n:a" + std::to_string(i) + "='x'";
  const struct {
    const char *name;
    std::string file, read;
  } rows[] = {
      {"directories without end", chain, "4"},
      {"texts over texts", overlapping + megabyte, "4"},
      {"blocks in blocks", nested, ""},
      {"packets without end", webpFile(times(5000, riffChunk("XMP ", "<"))), "4"},
      {"boxes without end", jpegXLFile(times(100000, box("free", ""))), "4"},
      {"many attributes of a long namespace",
       webpFile(riffChunk("XMP ", "<n:a xmlns:n='" + megabyte + "'" + attributes + "/>")), ""},
      {"many texts", pngFile({times(70000, pngChunk("tEXt", "Title\0a"s))}), "4PNG Title=a"},
      {"too much text", pngFile({[] {
         std::string all;
         for (int i = 0; i < 90; ++i)
           all += pngChunk("tEXt", "T\0"s + std::to_string(i) + std::string(60000, 'x'));
         return all;
       }()}),
       "4"},
  };
  for (const auto &[name, file, read] : rows)
    EXPECT_EQ(descriptionOf(file).substr(0, read.empty() ? 99 : read.size()), read) << name;
}

TEST(HostilePhotographTest, ReadsEveryBeginningOfAFile) {
  const std::string tags = photo()
                               .text(0, 0x010E, "beach")
                               .taken("2004:05:06 07:08:09")
                               .comment("JIS", "\x1B$B3$")
                               .tiff();
  const std::string packet = titlePacket("sea");
  const std::string iptc = photoshopResource(1028, iptcDataSet(2, 90, "x"));
  const std::string files[] = {
      tags,
      jpegFile({jpegSegment(0xE1, "Exif\0\0"s + tags), xmpSegment(packet), photoshopSegment(iptc)},
               0),
      pngFile({pngChunk("eXIf", tags), pngChunk("iTXt", "Title\0\0\0\0\0x"s)}),
      heifFile({{2, "Exif", offsetExif(tags)}, {3, "mime", packet, true}}),
      webpFile(riffChunk("EXIF", tags) + riffChunk("XMP ", packet)),
      crwFile(ciffHeap({{0x300A, ciffHeap({{0x080A, "Canon\0EOS\0"s}})}})),
      photoshopFile(iptc),
  };
  for (const std::string &file : files)
    for (std::size_t size = 0; size < file.size(); ++size)
      EXPECT_LE(descriptionOf(file.substr(0, size)).size(), 300U);
}

} // namespace
} // namespace searchsystem
