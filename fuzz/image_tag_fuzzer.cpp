// Reads any bytes as an image: every tag that a search asks for, and the texts and dates that are
// made of them.

#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/SystemCalls.h"
#include "platform/imagetag/CIMAGETAG.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace searchsystem {

namespace {

/// The content of the only file.
std::string_view fileContent;

constexpr SystemCalls callsOnContent{
    .openAt = [](int, const char *, int) { return open("/dev/null", O_RDONLY | O_CLOEXEC); },
    .listEntries = nullptr,
    .statusAt =
        [](int, const char *, int, struct statx *status) {
          status->stx_mode = S_IFREG | 0644;
          status->stx_size = fileContent.size();
          return 0;
        },
    .readAt =
        [](int, void *buffer, std::size_t size, off_t offset) {
          const std::string_view rest = fileContent.substr(static_cast<std::size_t>(offset));
          size = std::min(size, rest.size());
          std::memcpy(buffer, rest.data(), size);
          return static_cast<ssize_t>(size);
        },
    .startThread = nullptr,
};

void readTags(std::string_view image) {
  // A copy of its own size, so that every access beyond it is seen.
  const std::unique_ptr<char[]> bytes(new char[image.size()]);
  std::copy(image.begin(), image.end(), bytes.get());
  CIMAGETAG tags;
  tags.CreateField(nullptr, bytes.get(), static_cast<std::uint32_t>(image.size()), nullptr, nullptr,
                   nullptr, nullptr);
  for (const std::int16_t directory : {0, 1})
    for (const std::uint32_t tag :
         {0x0000, 0x010E, 0x0112, 0x011A, 0x8769, 0x9000, 0x9003, 0x9286}) {
      std::uint32_t size = 0;
      IMAGETAG_INFO *const info = tags.GetInfo(directory, tag, &size);
      if (info == nullptr)
        continue;
      if (size > image.size() || info->value.bytes[size] != '\0')
        std::abort();
      std::vector<char> value(std::max<std::size_t>(size, 1));
      FS_Exif_GetValueFromType(value.data(), info);
      CIMAGETAG::ReleaseInfo(info);
    }
}

void readTexts(std::string_view image) {
  static const Ref<const NSString> path = NSString::create("/photo.jpg");
  fileContent = image;
  const auto analysis = ExifAnalysis::startExifAnalysisAtPath(path.get());
  FileItem item(*path);
  const auto inSteps = ExifAnalysis::startExifAnalysisAtPath(item);
  // The answers are the same whether everything is read at once or only on demand.
  if (!analysis != !inSteps)
    std::abort();
  if (!analysis)
    return;
  for (const std::uint32_t tag : {0x9003, 0x010E, 0x010F, 0x0110, 0x9286}) {
    const auto text = analysis->getExifInfo(tag), other = inSteps->getExifInfo(tag);
    if (!text != !other || (text && text->view() != other->view()))
      std::abort();
    if (!text || tag != 0x9003)
      continue;
    if (const auto date = NSDate::dateWithNaturalLanguageString(*text);
        date && *text->UTF8String() == 't')
      std::abort();
  }
  analysis->endExifAnalysis();
  inSteps->endExifAnalysis();
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/) {
  setSystemCallsForTesting(&callsOnContent);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const std::string_view image(reinterpret_cast<const char *>(data), size);
  readTags(image);
  readTexts(image);
  return 0;
}
