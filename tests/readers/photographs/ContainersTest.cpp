#include "testing/CompressedDocument.h"
#include "testing/PhotographContainers.h"
#include "testing/PhotographOf.h"

#include <gtest/gtest.h>

#include <string>

namespace searchsystem {
namespace {

using namespace std::string_literals;

PhotoTags beach(ByteOrder order = ByteOrder::Little) {
  return PhotoTags(order).text(0, 0x010E, "beach").taken("2004:05:06 07:08:09");
}

const std::string beachRead = "Exif ImageDescription=beach @2004-05-06 07:08:09";

std::string marked(std::string tiff, const std::string &mark) {
  return tiff.replace(0, mark.size(), mark);
}

std::string profile(const std::string &name, std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "\n" + name + "\n      " + std::to_string(bytes.size()) + "\n";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    text.append({digits[byte >> 4], digits[byte & 15]});
    text += i % 36 == 35 ? "\n" : "";
  }
  return "Raw profile type " + name + '\0' + text;
}

std::string deflated(std::string_view data) { return CompressedDocument::deflated(data); }

/// A stream of Brotli that holds up to 65,536 bytes as they are (RFC 7932, 9.2).
std::string storedBrotli(std::string_view bytes) {
  // A window of 16 bits: 0; then, from the lowest bit on: not the last, four half-bytes of length
  // less one, uncompressed.
  const std::size_t head = (bytes.size() - 1) << 4 | 1U << 20;
  return littleEndian(head, 3) + std::string(bytes) + "\x03";
}

TEST(PhotographContainersTest, ReadsExifWhereverItStands) {
  const std::string little = beach().tiff();
  const std::string big = beach(ByteOrder::Big).tiff();
  const std::string segment = beach().exifSegment();
  const std::string filler = jpegSegment(0xE2, std::string(60000, 'x'));
  const struct {
    const char *name;
    std::string file;
  } rows[] = {
      {"JPEG", jpegFile({segment})},
      {"JPEG, behind 180,000 bytes", jpegFile({filler, filler, filler, segment})},
      {"JPEG with fill bytes", jpegFile({"\xFF\xFF" + segment})},
      {"TIFF, little-endian", little},
      {"TIFF, big-endian", big},
      {"TIFF, behind a large image", beach().tiff(300000)},
      {"ORF", marked(little, "IIRO")},
      {"ORF, later", marked(little, "IIRS")},
      {"RW2", marked(little, "IIU\0"s)},
      {"RAF", rafFile(jpegFile({segment}))},
      {"CR3", cr3File(PhotoTags(ByteOrder::Little).text(0, 0x010E, "beach").tiff(),
                      PhotoTags(ByteOrder::Little).text(0, 0x9003, "2004:05:06 07:08:09").tiff())},
      {"PNG, before the image", pngFile({pngChunk("eXIf", big), pngChunk("IDAT", "x")})},
      {"PNG, behind the image",
       pngFile({pngChunk("IDAT", std::string(30000, 'x')),
                pngChunk("IDAT", std::string(30000, 'x')), pngChunk("eXIf", "Exif\0\0"s + big)})},
      {"PNG, as text", pngFile({pngChunk("tEXt", profile("exif", "Exif\0\0"s + little))})},
      {"PNG, as compressed text",
       pngFile({pngChunk("zTXt", "Raw profile type APP1\0\0"s +
                                     deflated(profile("APP1", "Exif\0\0"s + little).substr(22)))})},
      {"WebP", webpFile(riffChunk("VP8X", "12345") + riffChunk("EXIF", little))},
      {"WebP, with a mark", webpFile(riffChunk("EXIF", "Exif\0\0"s + little))},
      {"HEIF", heifFile({{2, "Exif", offsetExif(big, "Exif\0\0"s)}})},
      {"HEIF, in its data box", heifFile({{2, "Exif", offsetExif(big), true}})},
      {"HEIF, of its primary image",
       heifFile({{2, "Exif", offsetExif(PhotoTags(ByteOrder::Big).text(0, 0x010E, "no").tiff()),
                  false, 7},
                 {3, "Exif", offsetExif(big, "Exif\0\0"s)}})},
      {"JPEG XL", jpegXLFile(box("jxlc", "x") + box("Exif", offsetExif(little)))},
      {"JPEG XL, compressed", jpegXLFile(box("brob", "Exif" + storedBrotli(offsetExif(little))))},
      {"Photoshop", photoshopFile(photoshopResource(1005, "abc") + photoshopResource(1058, big))},
  };
  for (const auto &[name, file] : rows)
    EXPECT_EQ(descriptionOf(file), beachRead) << name;
}

TEST(PhotographContainersTest, ReadsOtherDescriptionsWhereverTheyStand) {
  const std::string packet = titlePacket("sea");
  const std::string iptc = iptcDataSet(2, 25, "a") + iptcDataSet(2, 25, "b");
  const std::string resource = photoshopResource(1028, iptc);
  const std::string xmpRead = "XMP dc:title=sea";
  const std::string iptcRead = "IPTC Keywords=a; IPTC Keywords=b";
  const auto inTIFF = [](std::uint16_t tag, std::uint16_t type, const std::string &bytes) {
    const auto size =
        static_cast<std::uint32_t>(type == PhotoTags::Long ? bytes.size() / 4 : bytes.size());
    return PhotoTags(ByteOrder::Little).field(0, tag, type, size, bytes).tiff();
  };
  std::string swapped = iptc + "\0\0\0"s;
  swapped.resize(swapped.size() / 4 * 4);
  for (std::size_t i = 0; i < swapped.size(); i += 4)
    std::reverse(swapped.begin() + static_cast<std::ptrdiff_t>(i),
                 swapped.begin() + static_cast<std::ptrdiff_t>(i + 4));
  const std::string guid(32, 'A');
  const struct {
    const char *name;
    std::string file, read;
  } rows[] = {
      {"JPEG, XMP", jpegFile({xmpSegment(packet)}), xmpRead},
      {"JPEG, XMP that is continued, in any order",
       jpegFile({xmpSegment(xmpPacket("", "xmlns:n='http://ns.adobe.com/xmp/note/' "
                                          "n:HasExtendedXMP='" +
                                              guid + "'")),
                 extendedSegment(guid, 100, std::string_view(packet).substr(100)),
                 extendedSegment(std::string(32, 'B'), 0, titlePacket("other")),
                 extendedSegment(guid, 0, std::string_view(packet).substr(0, 100))}),
       xmpRead},
      {"JPEG, IPTC", jpegFile({photoshopSegment(resource)}), iptcRead},
      {"JPEG, IPTC in two segments",
       jpegFile({photoshopSegment(resource.substr(0, 20)), photoshopSegment(resource.substr(20))}),
       iptcRead},
      {"JPEG, comments", jpegFile({jpegSegment(0xFE, "one\0"s), jpegSegment(0xFE, "two\nlines")}),
       "JPEG Comment=one; JPEG Comment=two lines"},
      {"TIFF, XMP", inTIFF(0x02BC, PhotoTags::Byte, packet), xmpRead},
      {"TIFF, IPTC", inTIFF(0x83BB, PhotoTags::Undefined, iptc), iptcRead},
      {"TIFF, IPTC as numbers", inTIFF(0x83BB, PhotoTags::Long, swapped), iptcRead},
      {"TIFF, Photoshop", inTIFF(0x8649, PhotoTags::Byte, resource), iptcRead},
      {"BigTIFF, little-endian", bigTIFFFile(ByteOrder::Little, 0x010F, "Acme Cameras"),
       "Exif Make=Acme Cameras #Acme Cameras/"},
      {"BigTIFF, big-endian", bigTIFFFile(ByteOrder::Big, 0x0110, "Box with lens"),
       "Exif Model=Box with lens #/Box with lens"},
      {"RW2, in its JPEG file",
       marked(inTIFF(0x002E, PhotoTags::Undefined, jpegFile({xmpSegment(packet)})), "IIU\0"s),
       xmpRead},
      {"CRW",
       crwFile(
           ciffHeap({{0x300A, ciffHeap({{0x2807, ciffHeap({{0x080A, "Canon\0EOS\0"s}})},
                                        {0x180E, littleEndian(1083827289, 4) + "12345678"}})}})),
       "CIFF Make=Canon; CIFF Model=EOS @2004-05-06 07:08:09 #Canon/EOS"},
      {"PNG, texts",
       pngFile({pngChunk("tEXt", "Title\0caf\xE9"s),
                pngChunk("zTXt", "comment\0\0"s + deflated("deep")),
                pngChunk("tEXt", "exif:Make\0Acme"s),
                pngChunk("iTXt", "Author\0\0\0de\0Autor\0\xC3\x84nne"s),
                pngChunk("iTXt", "Source\0\1\0\0\0"s + deflated("\xC3\x9C")),
                pngChunk("tEXt", "Software\0Draw"s),
                pngChunk("tEXt", "Creation Time\0Thu, 6 May 2004 07:08:09 GMT"s)}),
       "PNG Title=café; PNG Comment=deep; PNG Author=Änne; PNG Source=Ü @2004-05-06 07:08:09"},
      {"PNG, XMP", pngFile({pngChunk("iTXt", "XML:com.adobe.xmp\0\0\0\0\0"s + packet)}), xmpRead},
      {"PNG, IPTC as text", pngFile({pngChunk("tEXt", profile("iptc", resource))}), iptcRead},
      {"WebP, XMP", webpFile(riffChunk("XMP ", packet)), xmpRead},
      {"HEIF, XMP", heifFile({{2, "mime", packet}}), xmpRead},
      {"JPEG XL, XMP", jpegXLFile(box("xml ", packet)), xmpRead},
      {"CR3, XMP",
       cr3File("", "") + box("uuid", "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3"
                                     "\xAF\xAC" +
                                         packet),
       xmpRead},
      {"Photoshop, XMP", photoshopFile(photoshopResource(1060, packet)), xmpRead},
      {"JPEG without descriptions", jpegFile({}), ""},
      {"JPEG XL without a container", "\xFF\x0A...", ""},
      {"an empty file", "", "2"},
      {"no photograph", "<html>", "2"},
  };
  for (const auto &[name, file, read] : rows)
    EXPECT_EQ(descriptionOf(file), read) << name;
}

TEST(PhotographContainersTest, ReadsAllPagesOfAFileButNoThumbnails) {
  // Two directories, one behind the other.
  const PhotoTags numbers(ByteOrder::Little);
  const auto directory = [&](const char *text, std::uint32_t next) {
    return numbers.number(1, 2) + numbers.number(0x010E, 2) + numbers.number(2, 2) +
           numbers.number(4, 4) + text + '\0' + numbers.number(next, 4);
  };
  const std::string tiff = "II*\0\x08\0\0\0"s + directory("one", 26) + directory("two", 8);
  EXPECT_EQ(descriptionOf(tiff), "Exif ImageDescription=one; Exif ImageDescription=two");
  EXPECT_EQ(descriptionOf(jpegFile({jpegSegment(0xE1, "Exif\0\0"s + tiff)})),
            "Exif ImageDescription=one");
}

TEST(PhotographContainersTest, ReadsNoMoreOfAFileThanItNeeds) {
  class CountingSource final : public ByteSource {
  public:
    explicit CountingSource(std::string_view file) : memory_(file) {}
    [[nodiscard]] std::uint64_t size() const noexcept override { return memory_.size(); }
    [[nodiscard]] std::size_t read(std::uint64_t offset, char *room,
                                   std::size_t count) noexcept override {
      const std::size_t done = memory_.read(offset, room, count);
      bytes += done;
      ++reads;
      return done;
    }
    std::size_t bytes = 0;
    int reads = 0;

  private:
    MemorySource memory_;
  };
  const std::string image(5000000, 'x');
  const struct {
    const char *name;
    std::string file;
    int reads;
  } rows[] = {
      {"JPEG", jpegFile({beach().exifSegment()}, image.size()), 1},
      {"TIFF", beach().tiff(image.size()), 2},
      {"PNG", pngFile({pngChunk("IDAT", image), pngChunk("eXIf", beach().tiff())}), 3},
      {"WebP", webpFile(riffChunk("VP8 ", image) + riffChunk("EXIF", beach().tiff())), 3},
  };
  for (const auto &[name, file, reads] : rows) {
    CountingSource source(file);
    DescriptionSink sink;
    EXPECT_EQ(readPhotograph(source, nullptr, sink), UnreadReason::none) << name;
    EXPECT_EQ(sink.description, beachRead) << name;
    EXPECT_LE(source.reads, reads) << name;
    EXPECT_LE(source.bytes, 20000U) << name;
  }
}

} // namespace
} // namespace searchsystem
