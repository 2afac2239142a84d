#include "platform/imagetag/ShootingDate.h"

#include "platform/foundation/FileBeginning.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/NaturalLanguageDate.h"
#include "platform/foundation/TryTwice.h"
#include "platform/imagetag/ExifDate.h"
#include "platform/imagetag/TagInfo.h"

#include <optional>

namespace searchsystem {

namespace {

std::optional<double> shootingDateOf(const char *path) {
  const Ref<const NSString> name = NSString::create(path);
  FileItem item(*name);
  std::optional<FileBeginning> file = FileBeginning::open(item, nullptr);
  CIMAGETAG imageTag;
  if (!file || imageTag.CreateField(*file) == 0)
    return std::nullopt;
  if (!tagInfoOf(imageTag, exifDirectory, tagExifVersion))
    return std::nullopt;
  const Ref<const NSString> text = shootingDateText(imageTag);
  return text ? intervalOfNaturalLanguageDate(text->view()) : std::nullopt;
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int PFImageGetShootingDate(const char *path, CFAbsoluteTime *date) {
  std::optional<double> found;
  if (path != nullptr)
    tryTwice([&] { found = shootingDateOf(path); });
  if (!found)
    return 0;
  *date = *found;
  return 1;
}
