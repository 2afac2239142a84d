#include "FileSharchFunction/SearchSystem/EntryTest.h"

#include "FileSharchFunction/SearchSystem/EntryFilters.h"
#include "platform/foundation/NSString.h"

EntryTest::EntryTest(const SearchPredicate &record)
    : modDateStart_(record.modDateStart), modDateEnd_(record.modDateEnd),
      takesSubFolders_(record.checkSubFolder != 0), wantsAll_(record.isAndSearch != 0) {
  if (record.nameKeyword != nullptr && record.nameKeyword->length() != 0)
    name_.emplace(record.nameKeyword->view(), keywordOptions(record.isDistinct));
}

EntryTest::Kind EntryTest::kindOf(FileItem &item, int type) const {
  char isFolder = 0;
  if (defaultFilter(item, type, &isFolder) != 0)
    return Kind::File;
  return isFolder != 0 && takesSubFolders_ && isAlias(item) == 0 ? Kind::SubFolder : Kind::Nothing;
}

bool EntryTest::meetsAll(FileItem &item) const {
  if (name_ && name_->find(item.name()).length == 0)
    return false;
  return fileModDateSearch(item, modDateStart_.get(), modDateEnd_.get()) != 0;
}

bool EntryTest::meetsAny(FileItem &item) const {
  if (name_ && name_->find(item.name()).length != 0)
    return true;
  return (modDateStart_ || modDateEnd_) &&
         fileModDateSearch(item, modDateStart_.get(), modDateEnd_.get()) != 0;
}
