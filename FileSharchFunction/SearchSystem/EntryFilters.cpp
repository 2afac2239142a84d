#include "FileSharchFunction/SearchSystem/EntryFilters.h"

#include "platform/foundation/LaunchServices.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSWorkspace.h"
#include "platform/foundation/PathComponents.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 4> extensions{"tif", "jpg", "pdf", "pct"};

constexpr std::size_t extensionLength = 3;

/// The extensions of a class of files.
std::span<const std::string_view> extensionsOfType(int type) noexcept {
  static constexpr std::array<std::string_view, 2> documentsAndPhotos{"pdf", "jpg"};
  switch (type) {
  case 0:
    return std::span(extensions).first(2);
  case 1:
    return std::span(extensions).subspan(2, 1);
  case 2:
    return documentsAndPhotos;
  case 3:
    return extensions;
  default:
    return {};
  }
}

bool hasExtensionOfType(std::string_view name, int type) noexcept {
  const std::string_view extension = extensionOfName(name);
  if (extension.size() != extensionLength)
    return false;
  const std::span<const std::string_view> accepted = extensionsOfType(type);
  return std::any_of(accepted.begin(), accepted.end(), [&](std::string_view known) {
    return equalIgnoringASCIICase(extension, known);
  });
}

} // namespace

char EntryFilters::defaultFilter(FileItem &item, int type, char *isFolder) {
  *isFolder = 0;
  if (item.name().starts_with('.'))
    return 0;
  const bool hasExtension = hasExtensionOfType(item.name(), type);
  if (!hasExtension && item.isListedAsNoFolder())
    return 0;
  switch (item.existence()) {
  case FileItem::Existence::None:
    return 0;
  case FileItem::Existence::Folder:
    *isFolder = isAlias(item) == 0 && !isFilePackage(item) ? 1 : 0;
    return 0;
  case FileItem::Existence::File:
    break;
  }
  return hasExtension ? 1 : 0;
}

char EntryFilters::isAlias(FileItem &item) noexcept {
  constexpr std::uint32_t notFollowed =
      kLSItemInfoIsAliasFile | kLSItemInfoIsSymlink | kLSItemInfoIsVolume;
  const std::optional<std::uint32_t> flags = LSCopyItemInfo(item);
  return !flags || (*flags & notFollowed) != 0 ? 1 : 0;
}

char EntryFilters::fileModDateSearch(FileItem &item, const NSDate *startDate,
                                     const NSDate *endDate) noexcept {
  if (startDate == nullptr && endDate == nullptr)
    return 1;
  const std::optional<FileStatus> &status = item.status();
  return !status || isInRange(status->modificationTime, startDate, endDate) ? 1 : 0;
}

bool EntryFilters::isInRange(double date, const NSDate *start, const NSDate *end) noexcept {
  const auto compareWith = [&](const NSDate &other) {
    return NSDate::compareIntervals(date, other.timeIntervalSinceReferenceDate());
  };
  return (start == nullptr || compareWith(*start) != NSOrderedAscending) &&
         (end == nullptr || compareWith(*end) != NSOrderedDescending);
}

unsigned EntryFilters::keywordOptions(char isDistinct) noexcept {
  return isDistinct != 0 ? NSLiteralSearch : NSCaseInsensitiveSearch;
}
