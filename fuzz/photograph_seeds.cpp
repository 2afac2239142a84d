// Writes the seeds of the fuzzer of photographs into a folder's sub-folder `photograph`.

#include "testing/CompressedDocument.h"
#include "testing/PhotographContainers.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <utility>

using namespace searchsystem;
using namespace std::string_literals;

int main(int argc, char **argv) {
  if (argc != 2) {
    std::cerr << "usage: photograph_seeds FOLDER\n";
    return 2;
  }
  const auto tags = [](ByteOrder order) {
    return PhotoTags(order)
        .text(0, 0x010E, "beach")
        .text(0, 0x010F, "Acme")
        .text(0, 0x8298, "me")
        .field(0, 0x9C9B, PhotoTags::Byte, 6, "a\0b\0\0\0"s)
        .taken("2004:05:06 07:08:09")
        .comment("UNICODE", "\xFE\xFF\0x"s);
  };
  const std::string little = tags(ByteOrder::Little).tiff();
  const std::string big = tags(ByteOrder::Big).tiff();
  const std::string packet = titlePacket("sea");
  const std::string iptc = iptcDataSet(1, 90, "\x1B%G") + iptcDataSet(2, 25, "key") +
                           iptcDataSet(2, 55, "20040506") + iptcDataSet(2, 60, "070809+0000");
  const std::string resources = photoshopResource(1028, iptc) + photoshopResource(1058, big);
  const std::string guid(32, 'A');
  const std::pair<const char *, std::string> seeds[] = {
      // The first byte chooses the container of the others; 0: none.
      {"tiff_little", "\0"s + little},
      {"tiff_big", "\0"s + big},
      {"tiff_blocks", "\0"s + PhotoTags(ByteOrder::Big)
                                  .field(0, 0x02BC, PhotoTags::Byte, 40, packet.substr(0, 40))
                                  .field(0, 0x8649, PhotoTags::Byte, 60, resources.substr(0, 60))
                                  .tiff()},
      {"big_tiff", "\0"s + bigTIFFFile(ByteOrder::Little, 0x010F, "Acme Cameras")},
      {"jpeg",
       "\0"s + jpegFile({jpegSegment(0xFE, "comment"), jpegSegment(0xE1, "Exif\0\0"s + little),
                         xmpSegment(xmpPacket("", "xmlns:n='http://ns.adobe.com/xmp/note/' "
                                                  "n:HasExtendedXMP='" +
                                                      guid + "'")),
                         extendedSegment(guid, 0, packet), photoshopSegment(resources)},
                        4)},
      {"png", "\0"s + pngFile({pngChunk("eXIf", big), pngChunk("tEXt", "Title\0x"s),
                               pngChunk("zTXt", "Comment\0\0"s + CompressedDocument::deflated("x")),
                               pngChunk("iTXt", "XML:com.adobe.xmp\0\0\0\0\0"s + packet)})},
      {"png_profile", "\6Raw profile type iptc\0\niptc\n  4\n1c025a00\n"s},
      {"webp", "\0"s + webpFile(riffChunk("EXIF", little) + riffChunk("XMP ", packet))},
      {"heif", "\0"s + heifFile({{2, "Exif", offsetExif(big)}, {3, "mime", packet, true}})},
      {"jpeg_xl", "\0"s + jpegXLFile(box("Exif", offsetExif(little)) + box("xml ", packet))},
      {"cr3", "\0"s + cr3File(big, little)},
      {"raf", "\0"s + rafFile(jpegFile({jpegSegment(0xE1, "Exif\0\0"s + little)}, 4))},
      {"crw", "\0"s + crwFile(ciffHeap({{0x300A, ciffHeap({{0x080A, "Canon\0EOS\0"s}})}}))},
      {"photoshop", "\0"s + photoshopFile(resources + photoshopResource(1060, packet))},
      {"exif", "\1"s + little},
      {"resources", "\2"s + resources},
      {"iptc", "\3"s + iptc},
      {"xmp", "\4"s + packet},
      {"japanese", "\x09\x1B$B3$\x1B(B x \x1B(I1"s},
  };
  const std::filesystem::path folder = std::filesystem::path(argv[1]) / "photograph";
  std::filesystem::create_directories(folder);
  for (const auto &[name, bytes] : seeds)
    std::ofstream(folder / name, std::ios::binary) << bytes;
}
