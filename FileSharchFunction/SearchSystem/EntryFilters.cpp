#include "FileSharchFunction/SearchSystem/EntryFilters.h"

#include "platform/foundation/LaunchServices.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSWorkspace.h"
#include "platform/foundation/PathComponents.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace searchsystem {

namespace {

/// An extension and the classes of files that it belongs to, a bit for each.
struct Extension {
  std::string_view text;
  unsigned types;
};
constexpr Extension extensions[] = {
    {"tif", 0b1001}, {"jpg", 0b1101}, {"pdf", 0b1110}, {"pct", 0b1000}};

bool hasExtensionOfType(std::string_view name, int type, const FileKinds *kinds) noexcept {
  const std::string_view text = extensionOfName(name);
  if (kinds != nullptr)
    return kinds->includes(text, type);
  return text.size() == 3 && type >= 0 && type <= 3 &&
         std::any_of(std::begin(extensions), std::end(extensions), [&](const Extension &known) {
           return (known.types >> type & 1U) != 0 && equalIgnoringASCIICase(text, known.text);
         });
}

} // namespace

char EntryFilters::defaultFilter(FileItem &item, int type, char *isFolder, const FileKinds *kinds) {
  *isFolder = 0;
  if (item.name().starts_with('.'))
    return 0;
  const bool hasExtension = hasExtensionOfType(item.name(), type, kinds);
  if (!hasExtension && item.isListedAsNoFolder())
    return 0;
  const FileItem::Existence existence = item.existence();
  if (existence == FileItem::Existence::Folder)
    *isFolder = isAlias(item) == 0 && !isFilePackage(item) ? 1 : 0;
  return existence == FileItem::Existence::File && hasExtension ? 1 : 0;
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

} // namespace searchsystem
