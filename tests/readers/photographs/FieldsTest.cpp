#include "testing/PhotographContainers.h"
#include "testing/PhotographOf.h"

#include <gtest/gtest.h>

#include <string>

namespace searchsystem {
namespace {

using namespace std::string_literals;

std::string utf16(std::u16string_view text, ByteOrder order) {
  std::string bytes;
  for (const char16_t unit : text)
    bytes += PhotoTags(order).number(unit, 2);
  return bytes;
}

TEST(PhotographFieldsTest, ReadsTextsOfExif) {
  const auto photo = [] { return PhotoTags(ByteOrder::Little); };
  const auto bigPhoto = [] { return PhotoTags(ByteOrder::Big); };
  const auto bytes = [&](std::uint16_t tag, std::uint16_t type, const std::string &value) {
    return photo().field(0, tag, type, static_cast<std::uint32_t>(value.size()), value);
  };
  const std::u16string beach = u"Plage \u00e9t\u00e9 \U0001F3D6";
  const std::string comment = "Exif UserComment=";
  const struct {
    const char *name;
    PhotoTags tags;
    std::string read;
  } rows[] = {
      {"UTF-8", photo().text(0, 0x010E, "Zürich"), "Exif ImageDescription=Zürich"},
      {"Latin-1", photo().text(0, 0x010E, "Z\xFCrich"), "Exif ImageDescription=Zürich"},
      {"Windows-1252", photo().text(0, 0x013B, "\x93x\x94 \x80"), "Exif Artist=“x” €"},
      {"of another type", bytes(0x010E, PhotoTags::Undefined, "abcde"),
       "Exif ImageDescription=abcde"},
      {"UTF-8 by its type",
       bytes(0x010E, 129,
             "stra\xC3\x9F"
             "e"),
       "Exif ImageDescription=straße"},
      {"up to its NUL", bytes(0x010E, PhotoTags::ASCII, "abc\0def"s), "Exif ImageDescription=abc"},
      {"blank", photo().text(0, 0x010E, "     "), ""},
      {"with blanks around it", photo().text(0, 0x010F, "  SONY   "), "Exif Make=SONY #SONY/"},
      {"maker and model", photo().text(0, 0x010F, "A").text(0, 0x0110, "B"),
       "Exif Make=A; Exif Model=B #A/B"},
      {"two copyrights", bytes(0x8298, PhotoTags::ASCII, "Ann \0Bob\0"s), "Exif Copyright=Ann Bob"},
      {"lens", photo().text(1, 0xA433, "L").text(1, 0xA434, "50mm"),
       "Exif LensMake=L; Exif LensModel=50mm"},
      {"texts of Windows",
       photo()
           .field(0, 0x9C9B, PhotoTags::Byte, 12,
                  utf16(u"T\u00ef\u0301t", ByteOrder::Little) + "\0\0x\0"s)
           .field(0, 0x9C9E, PhotoTags::Byte, 6, utf16(u"a;b", ByteOrder::Little)),
       "Exif XPTitle=Tḯt; Exif XPKeywords=a;b"},
      {"a number where a text should be", photo().field(0, 0x010E, PhotoTags::Long, 1, "abcd"), ""},
      {"comment, ASCII", photo().comment("ASCII", "plain"), comment + "plain"},
      {"comment without a code", photo().comment("", "plain\0x"s), comment + "plain"},
      {"comment, no code at all", photo().field(1, 0x9286, PhotoTags::Undefined, 11, "hello there"),
       comment + "hello there"},
      {"comment, blank", photo().comment("ASCII", "      "), ""},
      {"comment, UTF-16 of a little-endian file",
       photo().comment("UNICODE", utf16(beach, ByteOrder::Little)), comment + "Plage été 🏖"},
      {"comment, UTF-16 of a big-endian file",
       bigPhoto().comment("UNICODE", utf16(beach, ByteOrder::Big)), comment + "Plage été 🏖"},
      {"comment, UTF-16 with a mark",
       bigPhoto().comment("UNICODE", utf16(u"\uFEFFx\u00e9", ByteOrder::Little)), comment + "xé"},
      {"comment, JIS", photo().comment("JIS", "\x1B$B3$\x1B(B sea \x1B(I1\x1B(B"),
       comment + "海 sea ア"},
      {"comment, UTF-8 by mistake", photo().comment("JIS", "\u6D77"), comment + "\u6D77"},
      {"several lines", photo().text(0, 0x010E, "a  long\r\n des-\ncription\t-"),
       "Exif ImageDescription=a long des\x01"
       "cription -"},
      {"soft hyphens alone",
       photo().text(0, 0x010E, "\u00AD a \u00AD b \u00AD").text(0, 0x013B, "\u00AD \u00AD"),
       "Exif ImageDescription=a b"},
      {"compatibility", photo().text(0, 0x010E, "\uFB01sh \u00ADx"),
       "Exif ImageDescription=fish x"},
  };
  for (const auto &[name, tags, read] : rows)
    EXPECT_EQ(descriptionOf(tags.tiff()), read) << name;
}

TEST(PhotographFieldsTest, ReadsDataSetsOfIPTC) {
  const auto file = [](const std::string &records) {
    return photoshopFile(photoshopResource(1028, records));
  };
  const auto set = [](int number, std::string_view value) { return iptcDataSet(2, number, value); };
  const auto charset = [](std::string_view escape) { return iptcDataSet(1, 90, escape); };
  const struct {
    const char *name;
    std::string records, read;
  } rows[] = {
      {"all",
       set(5, "o") + set(120, "c") + set(25, "k") + set(80, "b") + set(90, "t") + set(101, "l") +
           set(105, "h") + set(15, "X"),
       "IPTC ObjectName=o; IPTC Caption=c; IPTC Keywords=k; IPTC By-line=b; IPTC City=t; "
       "IPTC Country=l; IPTC Headline=h"},
      {"UTF-8", charset("\x1B%G") + set(90, "Z\xC3\xBCrich"), "IPTC City=Zürich"},
      {"UTF-8 that was not declared", set(90, "Z\xC3\xBCrich"), "IPTC City=Zürich"},
      {"Latin-1 that was not declared", set(90, "Z\xFCrich"), "IPTC City=Zürich"},
      {"Latin-1", charset("\x1B-A") + set(90, "\xC3\xA9"), "IPTC City=Ã©"},
      {"Latin-2",
       charset("\x1B-B") + set(90, "\xA3\xF3"
                                   "d\xBC"),
       "IPTC City=Łódź"},
      {"Greek", charset("\x1B.F") + set(90, "\xC1\xE8\xDE\xED\xE1"), "IPTC City=Αθήνα"},
      {"Cyrillic", charset("\x1B-L") + set(90, "\xBC\xDE\xE1\xDA\xD2\xD0"), "IPTC City=Москва"},
      {"a long value", "\x1C\2\x78\x80\4"s + bigEndian(3, 4) + "sea" + set(90, "x"),
       "IPTC Caption=sea; IPTC City=x"},
      {"cut off", set(90, "x") + "\x1C\2\x5A\0\x09y"s, "IPTC City=x"},
  };
  for (const auto &[name, records, read] : rows)
    EXPECT_EQ(descriptionOf(file(records)), read) << name;
}

TEST(PhotographFieldsTest, ReadsPropertiesOfXMP) {
  const auto list = [](const std::string &property, const std::string &kind,
                       const std::string &items) {
    return "<" + property + "><rdf:" + kind + ">" + items + "</rdf:" + kind + "></" + property +
           ">";
  };
  const std::string face =
      "<r:Regions xmlns:r='http://www.metadataworkinggroup.com/schemas/regions/' "
      "rdf:parseType='Resource'><r:RegionList><rdf:Bag><rdf:li><rdf:Description r:Name='Ann' "
      "r:Type='Face'/></rdf:li><rdf:li rdf:parseType='Resource'><r:Name>Bob</r:Name></rdf:li>"
      "</rdf:Bag></r:RegionList></r:Regions>";
  const struct {
    const char *name;
    std::string packet, read;
  } rows[] = {
      {"every language",
       xmpPacket(list("dc:title", "Alt",
                      "<rdf:li xml:lang='x-default'>sea</rdf:li><rdf:li xml:lang='de'>Meer</rdf:li>"
                      "<rdf:li xml:lang='en'>sea</rdf:li>")),
       "XMP dc:title=sea; XMP dc:title=Meer"},
      {"tags", xmpPacket(list("dc:subject", "Bag", "<rdf:li>a</rdf:li>\n<rdf:li> b </rdf:li>")),
       "XMP dc:subject=a; XMP dc:subject=b"},
      {"as attributes", xmpPacket("", "photoshop:City='Bari' photoshop:Other='x' dc:rights='me'"),
       "XMP photoshop:City=Bari; XMP dc:rights=me"},
      {"as an element", xmpPacket("<photoshop:City>Bari &amp; Rom&#233;</photoshop:City>"),
       "XMP photoshop:City=Bari & Romé"},
      {"with a qualifier",
       xmpPacket("<photoshop:City rdf:parseType='Resource'><rdf:value>Bari</rdf:value>"
                 "<xmp:Note>x</xmp:Note></photoshop:City>"),
       "XMP photoshop:City=Bari"},
      {"another prefix",
       xmpPacket("<q:title xmlns:q='http://purl.org/dc/elements/1.1/'>sea</q:title>"
                 "<q:title xmlns:q='http://other/'>no</q:title><dc:creator>c</dc:creator>"),
       "XMP dc:title=sea; XMP dc:creator=c"},
      {"without a prefix", xmpPacket("<title xmlns='http://purl.org/dc/elements/1.1/'>sea</title>"),
       "XMP dc:title=sea"},
      {"of a file that it came from",
       xmpPacket("<xmp:Pantry><rdf:Bag><rdf:li><rdf:Description dc:title='no'/></rdf:li></rdf:Bag>"
                 "</xmp:Pantry>"),
       ""},
      {"faces", xmpPacket(face), "XMP mwg-rs:Name=Ann; XMP mwg-rs:Name=Bob"},
      {"categories",
       xmpPacket("", "xmlns:a='http://ns.acdsee.com/iptc/1.0/' "
                     "a:categories='&lt;C&gt;&lt;D A=\"1\"&gt;Trips&lt;/D&gt;&lt;/C&gt;'"),
       "XMP acdsee:categories=Trips"},
      {"Latin-1 by mistake", titlePacket("caf\xE9"), "XMP dc:title=café"},
      {"UTF-16",
       utf16(u"\uFEFF<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
             u"<r:Description xmlns:d='http://purl.org/dc/elements/1.1/' d:title='caf\u00e9'/>"
             u"</r:RDF>",
             ByteOrder::Big),
       "XMP dc:title=café"},
      {"padded", "\n" + titlePacket("sea") + std::string(9, '\0'), "XMP dc:title=sea"},
      {"broken off", titlePacket("sea").substr(0, titlePacket("sea").find("</rdf:Alt>")),
       "XMP dc:title=sea"},
      {"an entity of its own", "<!DOCTYPE x [<!ENTITY e 'sea'>]>" + titlePacket("&e;"), ""},
      {"too deep", xmpPacket([] {
         std::string text;
         for (int i = 0; i < 1000; ++i)
           text += "<a>";
         return text + "<dc:title>x</dc:title>";
       }()),
       ""},
  };
  for (const auto &[name, packet, read] : rows)
    EXPECT_EQ(descriptionOf(webpFile(riffChunk("XMP ", packet))), read) << name;
}

TEST(PhotographFieldsTest, ReadsASidecar) {
  const std::string photo = jpegFile({xmpSegment(titlePacket("sea"))});
  EXPECT_EQ(descriptionOf(photo, titlePacket("sea")), "XMP dc:title=sea; Sidecar dc:title=sea");
  EXPECT_EQ(descriptionOf(photo, "no XMP"), "XMP dc:title=sea");
  EXPECT_EQ(descriptionOf("no photograph", titlePacket("sea")), "2Sidecar dc:title=sea");
}

TEST(PhotographFieldsTest, PrefersTheCameraToXMP) {
  const std::string packet = xmpPacket("", "tiff:Make='m' tiff:Model='n'");
  EXPECT_EQ(descriptionOf(jpegFile({xmpSegment(packet),
                                    PhotoTags(ByteOrder::Big).text(0, 0x010F, "A").exifSegment()})),
            "XMP tiff:Make=m; XMP tiff:Model=n; Exif Make=A #A/n");
}

TEST(PhotographFieldsTest, StopsWhereNoMoreIsWanted) {
  class ShortSink final : public DescriptionSink {
  public:
    bool takeField(std::string_view name, std::string_view text) override {
      return DescriptionSink::takeField(name, text) && false;
    }
  };
  const std::string file = jpegFile({PhotoTags(ByteOrder::Big)
                                         .text(0, 0x010E, "one")
                                         .text(0, 0x013B, "two")
                                         .taken("2004:05:06 07:08:09")
                                         .exifSegment()});
  MemorySource source(file);
  ShortSink sink;
  EXPECT_EQ(readPhotograph(source, nullptr, sink), UnreadReason::none);
  EXPECT_EQ(sink.description, "Exif ImageDescription=one");
}

} // namespace
} // namespace searchsystem
