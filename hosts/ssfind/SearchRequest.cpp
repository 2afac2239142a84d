#include "hosts/ssfind/SearchRequest.h"

namespace searchsystem::ssfind {

namespace {

/// A string of any bytes without a NUL.
CFObject<CFStringRef> stringOf(const std::string &bytes) {
  return own(CFStringCreateWithFileSystemRepresentation(nullptr, bytes.c_str()));
}

} // namespace

SearchRequest::DateObjects::DateObjects(const DateRange &range)
    : start(own(CFDateCreate(nullptr, range.start))), end(own(CFDateCreate(nullptr, range.end))) {}

SearchRequest::SearchRequest(const Conditions &conditions) {
  const bool hasConditions =
      conditions.name || conditions.modified || conditions.keyword || conditions.taken;
  // An empty name is the condition that every file meets, where all conditions must hold.
  if (conditions.name || !hasConditions)
    name_ = stringOf(conditions.name.value_or(""));
  if (conditions.keyword)
    keyword_ = stringOf(*conditions.keyword);
  if (conditions.modified)
    modified_ = DateObjects(*conditions.modified);
  if (conditions.taken)
    taken_ = DateObjects(*conditions.taken);
  record_.nameKeyword = name_.get();
  record_.contentKeyword = keyword_.get();
  record_.searchPDFText = conditions.keyword && conditions.isKeywordInPDF ? 1 : 0;
  record_.searchExifText = conditions.keyword && conditions.isKeywordInExif ? 1 : 0;
  record_.modDateStart = modified_.start.get();
  record_.modDateEnd = modified_.end.get();
  record_.exifDateStart = taken_.start.get();
  record_.exifDateEnd = taken_.end.get();
  record_.isAndSearch = conditions.isAnyEnough && hasConditions ? 0 : 1;
  record_.isDistinct = conditions.isCaseSensitive ? 1 : 0;
}

SearchRequest SearchRequest::ofFolder(const Conditions &conditions, const std::string &folder) {
  SearchRequest request(conditions);
  request.folder_ = stringOf(folder);
  request.record_.searchFolder = request.folder_.get();
  request.record_.checkSubFolder = conditions.searchesSubfolders ? 1 : 0;
  return request;
}

SearchRequest SearchRequest::ofFiles(const Conditions &conditions,
                                     const std::vector<std::string_view> &paths) {
  SearchRequest request(conditions);
  std::vector<CFObject<CFStringRef>> strings;
  std::vector<const void *> values;
  strings.reserve(paths.size());
  values.reserve(paths.size());
  for (const std::string_view path : paths)
    values.push_back(strings.emplace_back(stringOf(std::string(path))).get());
  request.files_ = own(CFArrayCreate(nullptr, values.data(), static_cast<CFIndex>(values.size()),
                                     &kCFTypeArrayCallBacks));
  request.record_.fileList = request.files_.get();
  // Without sub-folders, so that a file which becomes a folder meanwhile does no harm.
  request.record_.checkSubFolder = 0;
  return request;
}

} // namespace searchsystem::ssfind
