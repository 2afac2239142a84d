#include "FileSharchFunction/SearchSystem/RequestFilter.h"

#include "FileSharchFunction/SearchSystem/EntryFilters.h"
#include "platform/foundation/NSString.h"

namespace searchsystem {

RequestFilter::RequestFilter(const SearchPredicate &record, const FileKinds *kinds)
    : modDateStart_(record.modDateStart), modDateEnd_(record.modDateEnd),
      takesSubFolders_(record.checkSubFolder != 0), wantsAll_(record.isAndSearch != 0) {
  if (kinds != nullptr)
    kinds_ = *kinds;
  if (record.nameKeyword != nullptr && record.nameKeyword->length() != 0)
    name_.emplace(record.nameKeyword->view(), EntryFilters::keywordOptions(record.isDistinct));
}

RequestFilter::Kind RequestFilter::kindOf(FileItem &item, int type) const {
  char isFolder = 0;
  if (EntryFilters::defaultFilter(item, type, &isFolder, kinds_ ? &*kinds_ : nullptr) != 0)
    return Kind::File;
  return isFolder != 0 && takesSubFolders_ && EntryFilters::isAlias(item) == 0 ? Kind::SubFolder
                                                                               : Kind::Nothing;
}

bool RequestFilter::meetsAll(FileItem &item) const {
  if (name_ && name_->find(item.name()).length == 0)
    return false;
  return EntryFilters::fileModDateSearch(item, modDateStart_.get(), modDateEnd_.get()) != 0;
}

bool RequestFilter::meetsAny(FileItem &item) const {
  if (name_ && name_->find(item.name()).length != 0)
    return true;
  return (modDateStart_ || modDateEnd_) &&
         EntryFilters::fileModDateSearch(item, modDateStart_.get(), modDateEnd_.get()) != 0;
}

} // namespace searchsystem
