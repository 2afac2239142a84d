#include "platform/imagetag/CIMAGETAG.h"
#include "testing/PhotoFile.h"

#include <gtest/gtest.h>

namespace searchsystem {

namespace {

using namespace std::string_literals;
using enum CIMAGETAG::Format;

constexpr std::uint16_t description = 0x010E, comment = 0x9286;

struct Releaser {
  void operator()(IMAGETAG_INFO *info) const { CIMAGETAG::ReleaseInfo(info); }
};
using Info = std::unique_ptr<IMAGETAG_INFO, Releaser>;

/// The tags of an image, of which a copy of its exact size is kept, so that every access beyond it
/// is seen.
class Image {
public:
  explicit Image(const std::string &bytes) : bytes_(new char[bytes.size()]) {
    std::copy(bytes.begin(), bytes.end(), bytes_.get());
    isOpen_ = tags_.CreateField(nullptr, bytes_.get(), static_cast<std::uint32_t>(bytes.size()),
                                &format_, &base_, &size_, &exifDirectory_);
  }

  [[nodiscard]] Info info(std::int16_t directory, std::uint32_t tag) {
    return Info(tags_.GetInfo(directory, tag, nullptr));
  }

  /// The bytes of a value, or "none".
  [[nodiscard]] std::string value(std::int16_t directory, std::uint32_t tag) {
    std::uint32_t size = 0;
    const Info info(tags_.GetInfo(directory, tag, &size));
    return info ? std::string(info->value.bytes, size) : "none";
  }

  int isOpen_;
  std::int16_t format_ = -1;
  std::uint32_t base_ = 1, size_ = 1, exifDirectory_ = 1;

private:
  std::unique_ptr<char[]> bytes_;
  CIMAGETAG tags_;
};

TEST(CIMAGETAG, FindsTheTagsWhereverTheyAre) {
  const auto xmp = jpegSegment(0xE1, "http://ns.adobe.com/xap/1.0/\0<x:xmpmeta Exif\0\0II*"s);
  const auto jfif = jpegSegment(0xE0, "JFIF\0\1\1\0\0\1\0\1\0\0"s);
  for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
    const PhotoTags photo = PhotoTags::photo(order).text(0, description, "a beach");
    const std::string exif = photo.exifSegment(), jpeg = jpegFile({exif});
    const struct {
      const char *name;
      std::string image;
      CIMAGETAG::Format format;
    } rows[] = {{"TIFF", photo.tiff(), TIFF},
                {"TIFF, directory behind the image", photo.tiff(60000), TIFF},
                {"JPEG", jpeg, JPEG},
                {"no zero behind the name", std::string(jpeg).replace(11, 1, "x"), JPEG},
                {"after other blocks", jpegFile({jfif, xmp, xmp, exif, xmp}), JPEG},
                {"after a block that holds another image",
                 jpegFile({jpegSegment(0xE0, std::string(300, 'x') + jpegFile({})), exif}), JPEG},
                {"fill bytes", jpegFile({jfif, "\xFF\xFF\xFF"s, exif}), JPEG},
                {"bytes between segments", jpegFile({jfif, "abc\xFF\0\xFF\xD0"s, exif}), JPEG},
                {"after a damaged block",
                 jpegFile({jpegSegment(0xE1, "Exif\0\0IX*\0\0\0\0\0"s), exif}), JPEG},
                {"cut off behind the values", "\xFF\xD8"s + exif, JPEG},
                {"image of no size", "", NoFormat},
                {"no tags", jpegFile({jfif, xmp}), NoFormat},
                {"only a name", jpegFile({jpegSegment(0xE1, "Exif\0"s)}), NoFormat},
                {"length of 1", jpegFile({"\xFF\xE0\0\1"s, exif}), NoFormat},
                {"after the image", jpegFile({}) + exif, NoFormat},
                {"not 42", photo.tiff().replace(2, 2, photo.number(43, 2)), NoFormat},
                {"another format", "%PDF-1.3 " + exif, NoFormat}};
    for (const auto &row : rows) {
      Image image(row.image);
      const bool hasTags = row.format != NoFormat;
      EXPECT_EQ(image.isOpen_, hasTags ? 1 : 0) << row.name;
      EXPECT_EQ(image.format_, row.format) << row.name;
      EXPECT_EQ(image.value(0, description), hasTags ? "a beach\0"s : "none") << row.name;
      EXPECT_EQ(image.value(1, 0x9000), hasTags ? "0230" : "none") << row.name;
      // The EXIF directory has one entry, of which the value is the end.
      const std::string block = row.image.substr(image.base_, image.size_);
      EXPECT_EQ(block.find("0230"), hasTags ? image.exifDirectory_ + 10 : block.npos) << row.name;
      EXPECT_TRUE(hasTags ? block.ends_with("a beach\0"s) : block.empty()) << row.name;
    }
  }
}

TEST(CIMAGETAG, GivesNumbersInTheMachinesOrder) {
  for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
    PhotoTags tags(order);
    const auto n = [&](std::uint64_t value, std::size_t size) { return tags.number(value, size); };
    tags.field(0, 1, PhotoTags::Byte, 2, "ab")
        .field(0, 3, PhotoTags::Short, 3, n(1, 2) + n(0xFFFE, 2) + n(3, 2));
    tags.field(0, 4, PhotoTags::Long, 1, n(0x12345678, 4)).field(0, 5, 5, 1, n(7, 4) + n(9, 4));
    tags.field(0, 8, 8, 1, n(0xFFFF, 2)).field(0, 10, 10, 1, n(0xFFFFFFFF, 4) + n(2, 4));
    tags.field(0, 11, 11, 1, n(0x3FC00000, 4)).field(0, 12, 12, 1, n(0x4004000000000000, 8));
    Image image(tags.tiff());
    EXPECT_EQ(image.value(0, 1), "ab");
    const Info shorts = image.info(0, 3);
    EXPECT_EQ(shorts->count, 3);
    EXPECT_EQ(shorts->value.shorts[1], 0xFFFE);
    EXPECT_EQ(image.info(0, 4)->value.longs[0], 0x12345678U);
    EXPECT_EQ(image.info(0, 5)->value.longs[1], 9U);
    EXPECT_EQ(image.info(0, 8)->value.signedShorts[0], -1);
    EXPECT_EQ(image.info(0, 10)->value.signedLongs[0], -1);
    EXPECT_EQ(image.info(0, 11)->value.floats[0], 1.5F);
    EXPECT_EQ(image.info(0, 12)->value.doubles[0], 2.5);
  }
}

TEST(CIMAGETAG, HasNoTagThatIsNotWhole) {
  auto many = PhotoTags::photo().text(0, description, "x").tiff();
  many[8] = many[9] = '\xFF';
  const auto own = [] { return PhotoTags(ByteOrder::Little); };
  const struct {
    const char *name;
    PhotoTags tags;
    std::string value;
  } rows[] = {
      {"not terminated", own().field(0, description, PhotoTags::ASCII, 3, "abc"), "abc"},
      {"at the end", own().field(0, description, PhotoTags::ASCII, 6, "abcdef"), "abcdef"},
      {"no value", own().field(0, description, PhotoTags::ASCII, 0, ""), ""},
      {"one too many", own().field(0, description, PhotoTags::ASCII, 7, "abcdef"), "none"},
      {"outside", own().fieldAt(0, description, PhotoTags::ASCII, 5, 0xFFFFFFFE), "none"},
      {"too many", own().fieldAt(0, description, 12, 0x20000001, 8), "none"},
      {"all of them", own().fieldAt(0, description, PhotoTags::Undefined, 0xFFFFFFFF, 8), "none"},
      {"type 0", own().field(0, description, 0, 1, "a"), "none"},
      {"type 14", own().field(0, description, 14, 1, "a"), "none"},
      {"negative type", own().field(0, description, 0x8002, 1, "a"), "none"},
      {"the first of two", own().text(0, description, "ab").text(0, description, "c"), "ab\0"s},
  };
  for (const auto &row : rows)
    EXPECT_EQ(Image(row.tags.tiff()).value(0, description), row.value) << row.name;

  EXPECT_EQ(Image(many).value(0, description), "x\0"s) << "65,535 entries are said to be there";
  auto itself = own().fieldAt(0, 0x8769, PhotoTags::Long, 1, 8).text(0, comment, "ab");
  EXPECT_EQ(Image(itself.tiff()).value(1, comment), "ab\0"s) << "the directory leads to itself";
  auto outside = own().fieldAt(0, 0x8769, PhotoTags::Long, 1, 0xFFFFFFFF);
  EXPECT_EQ(Image(outside.tiff()).value(1, comment), "none");
  Image photo(PhotoTags::photo().tiff());
  EXPECT_EQ(photo.value(2, 0x9000), "none") << "no such directory";
  EXPECT_EQ(photo.value(1, 0x19000), "none") << "no such tag";
}

TEST(CIMAGETAG, EndsWithWholeValuesOnAnyCutOrFlippedByte) {
  for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
    const PhotoTags photo =
        PhotoTags::photo(order).text(0, description, "a beach").comment("", "x");
    for (const auto &whole : {photo.tiff(), jpegFile({"\xFF"s, photo.exifSegment()}, 0)}) {
      for (std::size_t size = 0; size < whole.size(); ++size) {
        Image image(whole.substr(0, size));
        const std::string value = image.value(0, description);
        EXPECT_TRUE(value == "none" || value == "a beach\0"s) << size;
      }
      for (std::size_t i = 0; i < whole.size() * 8; ++i) {
        auto damaged = whole;
        damaged[i / 8] = static_cast<char>(damaged[i / 8] ^ 1 << i % 8);
        Image image(damaged);
        for (const std::uint32_t tag : {0x010E, 0x8769, 0x9000, 0x9286})
          for (const std::int16_t directory : {0, 1})
            if (const Info info = image.info(directory, tag)) {
              ASSERT_LE(static_cast<std::size_t>(info->count), whole.size()) << i;
            }
      }
    }
  }
}

} // namespace

} // namespace searchsystem
