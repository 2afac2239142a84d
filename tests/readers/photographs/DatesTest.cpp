#include "testing/PhotographContainers.h"
#include "testing/PhotographOf.h"

#include <gtest/gtest.h>

#include <string>

namespace searchsystem {
namespace {

std::string dateOf(std::string_view file, std::string_view sidecar = {}) {
  const std::string read = descriptionOf(file, sidecar);
  const std::size_t at = read.find('@');
  return at == std::string::npos ? "" : read.substr(at + 1);
}

TEST(PhotographDatesTest, ReadsDatesInAnyForm) {
  const struct {
    const char *text, *read;
  } rows[] = {
      {"2004:05:06 07:08:09", "2004-05-06 07:08:09"},
      {"2004-05-06T07:08:09.25+02:00", "2004-05-06 07:08:09"},
      {"2004-05-06T07:08Z", "2004-05-06 07:08:00"},
      {"2004/05/06 07:08:09", "2004-05-06 07:08:09"},
      {"2004:05:06", "2004-05-06 00:00:00"},
      {"2004-05", "2004-05-01 00:00:00"},
      {"2004", "2004-01-01 00:00:00"},
      {"2004:00:00 00:00:00", "2004-01-01 00:00:00"},
      {"2004:05:06   :  :  ", "2004-05-06 00:00:00"},
      {"2004:05:06 24:00:00", "2004-05-06 00:00:00"},
      {"20040506 070809+0200", "2004-05-06 07:08:09"},
      {"2004:02:29 00:00:00", "2004-02-29 00:00:00"},
      {"2005:02:29 00:00:00", ""},
      {"2004:13:01 00:00:00", ""},
      {"0000:00:00 00:00:00", ""},
      {"    :  :     :  :  ", ""},
      {"", ""},
      {"today", ""},
      {"204:05:06", ""},
  };
  for (const auto &[text, read] : rows)
    EXPECT_EQ(dateOf(PhotoTags(ByteOrder::Little).taken(text).tiff()), read) << text;
  EXPECT_EQ(parseLetterDate("6 May 2004 07:08"), (PhotographDate{2004, 5, 6, 7, 8, 0}));
  EXPECT_FALSE(parseLetterDate("Thu, 31 Jun 2004 07:08:09"));
  EXPECT_FALSE(parseLetterDate("long ago"));
}

TEST(PhotographDatesTest, TakesTheFirstDateThatThereIs) {
  const auto exif = [](std::uint16_t tag, const char *date) {
    return PhotoTags(ByteOrder::Little).text(1, tag, date).exifSegment();
  };
  const auto property = [](const std::string &name, const std::string &date) {
    return xmpPacket("", name + "='" + date + "'");
  };
  const std::string iptc = photoshopSegment(
      photoshopResource(1028, iptcDataSet(2, 55, "20080101") + iptcDataSet(2, 60, "101112+0000")));
  // Each row adds what counts more than all before it.
  std::string segments = iptc;
  EXPECT_EQ(dateOf(jpegFile({segments})), "2008-01-01 10:11:12");
  const struct {
    std::string segment;
    const char *read;
  } rows[] = {
      {xmpSegment(property("xmp:CreateDate", "2007-01-01")), "2007-01-01 00:00:00"},
      {xmpSegment(property("photoshop:DateCreated", "2006-01-01")), "2006-01-01 00:00:00"},
      {xmpSegment(property("exif:DateTimeOriginal", "2005-01-01")), "2005-01-01 00:00:00"},
      {exif(0x9004, "2004:01:01 00:00:00"), "2004-01-01 00:00:00"},
      {exif(0x9003, "2003:01:01 00:00:00"), "2003-01-01 00:00:00"},
      {exif(0x9003, "0000:00:00 00:00:00"), "2003-01-01 00:00:00"},
      {exif(0x0132, "2002:01:01 00:00:00"), "2003-01-01 00:00:00"},
  };
  for (const auto &[segment, read] : rows) {
    segments += segment;
    EXPECT_EQ(dateOf(jpegFile({segments})), read);
  }
  EXPECT_EQ(dateOf(jpegFile({xmpSegment(property("photoshop:DateCreated", "2006-01-01"))}),
                   property("exif:DateTimeOriginal", "2005-01-01")),
            "2005-01-01 00:00:00");
}

} // namespace
} // namespace searchsystem
