#include "FileSharchFunction/SearchSystem/EntryFilters.h"
#include "FileSharchFunction/SearchSystem/SearchEngine.h"

char SearchEngine::defaultFilter(const NSString *path, int type, char *isFolder) const {
  FileItem item(*path);
  return ::defaultFilter(item, type, isFolder);
}

char SearchEngine::isAlias(const NSString *path) const noexcept {
  if (path == nullptr)
    return 0;
  FileItem item(*path);
  return ::isAlias(item);
}

char SearchEngine::fileModDateSearch(const NSString *path, const NSDate *startDate,
                                     const NSDate *endDate) const noexcept {
  FileItem item(*path);
  return ::fileModDateSearch(item, startDate, endDate);
}

char SearchEngine::keyWordSearch(const NSString *text, const NSString *keyword,
                                 char isDistinct) const {
  if (text == nullptr || keyword == nullptr)
    return 0;
  return text->rangeOfString(*keyword, keywordOptions(isDistinct)).length != 0 ? 1 : 0;
}
