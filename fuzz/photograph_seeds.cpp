// Writes the seeds of the fuzzer of photographs into a folder's sub-folder `photograph`.

#include "testing/CompressedDocument.h"
#include "testing/PhotographContainers.h"
#include "testing/SeedFiles.h"

#include <string>

using namespace searchsystem;
using namespace std::string_literals;

int main(int argc, char **argv) {
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
  const Seed seeds[] = {
      // The first byte chooses the container of the others; 0: none.
      {"photograph/tiff_little", "\0"s + little},
      {"photograph/tiff_big", "\0"s + big},
      {"photograph/tiff_blocks",
       "\0"s + PhotoTags(ByteOrder::Big)
                   .field(0, 0x02BC, PhotoTags::Byte, 40, packet.substr(0, 40))
                   .field(0, 0x8649, PhotoTags::Byte, 60, resources.substr(0, 60))
                   .tiff()},
      {"photograph/big_tiff", "\0"s + bigTIFFFile(ByteOrder::Little, 0x010F, "Acme Cameras")},
      {"photograph/jpeg",
       "\0"s + jpegFile({jpegSegment(0xFE, "comment"), jpegSegment(0xE1, "Exif\0\0"s + little),
                         xmpSegment(xmpPacket("", "xmlns:n='http://ns.adobe.com/xmp/note/' "
                                                  "n:HasExtendedXMP='" +
                                                      guid + "'")),
                         extendedSegment(guid, 0, packet), photoshopSegment(resources)},
                        4)},
      {"photograph/png",
       "\0"s + pngFile({pngChunk("eXIf", big), pngChunk("tEXt", "Title\0x"s),
                        pngChunk("zTXt", "Comment\0\0"s + CompressedDocument::deflated("x")),
                        pngChunk("iTXt", "XML:com.adobe.xmp\0\0\0\0\0"s + packet)})},
      {"photograph/png_profile", "\6Raw profile type iptc\0\niptc\n  4\n1c025a00\n"s},
      {"photograph/webp", "\0"s + webpFile(riffChunk("EXIF", little) + riffChunk("XMP ", packet))},
      {"photograph/heif",
       "\0"s + heifFile({{2, "Exif", offsetExif(big)}, {3, "mime", packet, true}})},
      {"photograph/jpeg_xl",
       "\0"s + jpegXLFile(box("Exif", offsetExif(little)) + box("xml ", packet))},
      {"photograph/cr3", "\0"s + cr3File(big, little)},
      {"photograph/raf", "\0"s + rafFile(jpegFile({jpegSegment(0xE1, "Exif\0\0"s + little)}, 4))},
      {"photograph/crw",
       "\0"s + crwFile(ciffHeap({{0x300A, ciffHeap({{0x080A, "Canon\0EOS\0"s}})}}))},
      {"photograph/photoshop", "\0"s + photoshopFile(resources + photoshopResource(1060, packet))},
      {"photograph/exif", "\1"s + little},
      {"photograph/resources", "\2"s + resources},
      {"photograph/iptc", "\3"s + iptc},
      {"photograph/xmp", "\4"s + packet},
      {"photograph/japanese", "\x09\x1B$B3$\x1B(B x \x1B(I1"s},
  };
  return writeSeeds(argc, argv, seeds);
}
