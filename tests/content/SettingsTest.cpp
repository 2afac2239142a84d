#include "platform/content/ContentSettings.h"
#include "platform/foundation/NSString.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

namespace {

/// The file-type classes that an extension belongs to, as in "023".
std::string classesOf(const FileKinds &kinds, std::string_view extension) {
  std::string classes;
  for (int type = -1; type <= 4; ++type)
    if (kinds.includes(extension, type))
      classes += std::to_string(type);
  return classes;
}

TEST(FileKinds, WidenTheClasses) {
  const FileKinds kinds;
  for (const char *const photograph : {"jpg", "JPEG", "Tif", "tiff", "heic", "NEF", "3fr", "rwl"})
    EXPECT_EQ(classesOf(kinds, photograph), "023") << photograph;
  EXPECT_EQ(classesOf(kinds, "PDF"), "123");
  for (const char *const other : {"gif", "pct", "pict", "ai", "HDR"})
    EXPECT_EQ(classesOf(kinds, other), "3") << other;
  for (const char *const none : {"", "txt", "jp", "jpgg", "xjpeg", "tiff ", "pd\0f", "\xFF"})
    EXPECT_EQ(classesOf(kinds, none), "") << none;
}

TEST(FileKinds, KnowWhoReadsThem) {
  EXPECT_TRUE(FileKinds::isDocument("Pdf"));
  EXPECT_FALSE(FileKinds::isDocument("jpg"));
  EXPECT_TRUE(FileKinds::isPhotograph("jpg"));
  EXPECT_FALSE(FileKinds::isPhotograph("gif"));
}

CFArrayRef arrayOf(const std::vector<std::string_view> &texts) {
  std::vector<Ref<const NSString>> strings;
  std::vector<const void *> elements;
  for (const std::string_view text : texts)
    elements.push_back(strings.emplace_back(NSString::create(text)).get());
  return CFArrayCreate(nullptr, elements.data(), static_cast<CFIndex>(elements.size()),
                       &kCFTypeArrayCallBacks);
}

TEST(ContentSettings, NarrowToSomeExtensions) {
  const CFArrayRef extensions = arrayOf({"PDF", "sketch", "gif"});
  EXPECT_EQ(PFContentSetExtensions(extensions), 1);
  CFRelease(extensions);
  const FileKinds narrowed = ContentSettings::current().kinds;
  EXPECT_EQ(PFContentSetExtensions(nullptr), 1);
  EXPECT_EQ(classesOf(narrowed, "pdf"), "123");
  EXPECT_EQ(classesOf(narrowed, "Sketch"), "3");
  EXPECT_EQ(classesOf(narrowed, "gif"), "3");
  EXPECT_EQ(classesOf(narrowed, "jpg"), "");
  EXPECT_EQ(classesOf(ContentSettings::current().kinds, "jpg"), "023");
}

TEST(ContentSettings, ArePlainUnlessToldOtherwise) {
  EXPECT_FALSE(ContentSettings::current().isDeep);
  PFContentSetDepth(PFContentDeep);
  EXPECT_TRUE(ContentSettings::current().isDeep);
  PFContentSetDepth(7);
  EXPECT_FALSE(ContentSettings::current().isDeep);
}

} // namespace

} // namespace searchsystem
