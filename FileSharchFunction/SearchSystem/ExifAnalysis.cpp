#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"

#include "platform/foundation/TryTwice.h"
#include "platform/imagetag/TagInfo.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::int16_t noErr = 0;
constexpr std::int16_t fnfErr = -43;

constexpr std::uint32_t tagImageDescription = 0x010E;
constexpr std::uint32_t tagModel = 0x0110;
constexpr std::uint32_t tagUserComment = 0x9286;

} // namespace

ExifAnalysis::ExifAnalysis() : _imageTag(std::make_unique<CIMAGETAG>()) {}

Ref<ExifAnalysis> ExifAnalysis::create() { return Ref<ExifAnalysis>::adopt(new ExifAnalysis); }

Ref<ExifAnalysis> ExifAnalysis::startExifAnalysisAtPath(const NSString *path) noexcept {
  Ref<ExifAnalysis> analysis;
  tryTwice([&] { analysis = create(); });
  return analysis && analysis->initCIMAGETAG(path) != 0 ? analysis : nullptr;
}

Ref<ExifAnalysis>
ExifAnalysis::startExifAnalysisAtPath(FileItem &item, const std::atomic<char> *isStopped) noexcept {
  return start(FileBeginning::open(item, isStopped));
}

Ref<ExifAnalysis>
ExifAnalysis::startExifAnalysisOfFile(int file, std::uint64_t size,
                                      const std::atomic<char> *isStopped) noexcept {
  return start(FileBeginning::ofOpenFile(file, size, isStopped));
}

Ref<ExifAnalysis> ExifAnalysis::start(std::optional<FileBeginning> beginning) noexcept {
  Ref<ExifAnalysis> analysis;
  if (!beginning || !tryTwice([&] { analysis = create(); }))
    return nullptr;
  analysis->beginning_.emplace(*std::move(beginning));
  analysis->_imageTag->CreateField(*analysis->beginning_);
  return analysis->hasExifDirectory() ? analysis : nullptr;
}

char ExifAnalysis::initCIMAGETAG(const NSString *path) noexcept {
  endExifAnalysis();
  if (readDataHandle(path, &_exifData) != noErr)
    return 0;
  const std::string_view bytes = _exifData->view();
  std::int16_t format = 0;
  std::uint32_t base = 0, size = 0, directory = 0;
  _imageTag->CreateField(nullptr, bytes.data(), static_cast<std::uint32_t>(bytes.size()), &format,
                         &base, &size, &directory);
  return hasExifDirectory() ? 1 : 0;
}

bool ExifAnalysis::hasExifDirectory() noexcept {
  if (tagInfoOf(*_imageTag, exifDirectory, tagExifVersion))
    return true;
  endExifAnalysis();
  return false;
}

std::int16_t ExifAnalysis::readDataHandle(const NSString *path,
                                          Ref<const NSData> *handle) noexcept {
  if (path == nullptr)
    return fnfErr;
  FileItem item(*path);
  std::optional<FileBeginning> beginning = FileBeginning::open(item, nullptr);
  Ref<const NSData> data = beginning ? (*std::move(beginning)).all() : nullptr;
  if (!data)
    return fnfErr;
  *handle = std::move(data);
  return noErr;
}

Ref<const NSString> ExifAnalysis::getExifInfo(std::uint32_t tag) noexcept {
  Ref<const NSString> text;
  tryTwice([&] {
    if (tag == tagDateTimeOriginal) {
      text = shootingDateText(*_imageTag);
    } else if (tag >= tagImageDescription && tag <= tagModel) {
      const TagInfo info = tagInfoOf(*_imageTag, mainDirectory, tag);
      if (isText(info))
        text = NSString::initWithData(info->value.bytes, NSDefaultCStringEncoding);
    } else if (tag == tagUserComment) {
      const TagInfo info = tagInfoOf(*_imageTag, exifDirectory, tag);
      if (info && info->type == IMAGETAG_UNDEFINED)
        text = getUserComment(info.get());
    }
  });
  return text;
}

void ExifAnalysis::endExifAnalysis() noexcept {
  _imageTag->CloseField();
  _exifData = nullptr;
  beginning_.reset();
}

Ref<const NSString> ExifAnalysis::getUserComment(IMAGETAG_INFO *info) noexcept {
  constexpr std::size_t codeSize = 8;
  char *const value = info->value.bytes;
  // A shorter value is followed by zeros.
  const std::string_view code(value, codeSize);
  std::size_t skip = codeSize;
  NSStringEncoding encoding = NSDefaultCStringEncoding;
  if (code.starts_with("ASCII")) {
    encoding = NSASCIIStringEncoding;
  } else if (code.starts_with("JIS")) {
    encoding = NSISO2022JPStringEncoding;
  } else if (code.starts_with("UNICODE")) {
    const auto first = static_cast<unsigned char>(value[codeSize]);
    encoding = first == 0xEF ? NSUTF8StringEncoding : NSUnicodeStringEncoding;
    if (first != 0xEF && first != 0xFE && first != 0xFF) {
      // Without a mark it is little-endian, whatever the file's byte order.
      value[6] = '\xFF';
      value[7] = '\xFE';
      skip = 6;
    }
  } else if (code.front() != '\0') {
    return nullptr;
  }
  const auto count = static_cast<std::size_t>(std::max<std::int32_t>(info->count, 0));
  if (count <= skip)
    return nullptr;
  Ref<const NSString> text;
  tryTwice([&] { text = NSString::initWithData({value + skip, count - skip}, encoding); });
  return text;
}

int FS_Exif_GetValueFromType(void *value, const IMAGETAG_INFO *info) noexcept {
  // By type, from BYTE on: nothing of ASCII, only the numerator of a signed rational.
  constexpr std::array<int, 12> sizes{1, 0, 2, 4, 8, 1, 1, 2, 4, 4, 4, 8};
  const auto index = static_cast<std::size_t>(info->type - IMAGETAG_BYTE);
  if (info->count <= 0 || index >= sizes.size() || sizes[index] == 0)
    return 0;
  const bool copiesAll = info->type == IMAGETAG_BYTE || info->type == IMAGETAG_RATIONAL;
  const auto count = copiesAll ? static_cast<std::size_t>(info->count) : 1;
  std::memcpy(value, info->value.pointer, count * static_cast<std::size_t>(sizes[index]));
  return sizes[index];
}

} // namespace searchsystem
