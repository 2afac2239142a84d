#include "FileSharchFunction/SearchSystem/EntryFilters.h"
#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"
#include "FileSharchFunction/SearchSystem/SearchEngine.h"
#include "pdf_reader/CPDFFile.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NaturalLanguageDate.h"
#include "platform/foundation/TextPattern.h"
#include "platform/foundation/TryTwice.h"
#include "platform/imagetag/TagInfo.h"
#include "streams/MemoryShortage.h"

#include <algorithm>
#include <new>

namespace {

/// Image description, make, model, user comment.
constexpr std::uint32_t textTags[] = {0x010E, 0x010F, 0x0110, 0x9286};

} // namespace

void SearchEngine::exifSearch(const NSString *path, char *outKeywordResult,
                              char *outTokenDateResult) const {
  *outKeywordResult = *outTokenDateResult = 0;
  if (path == nullptr)
    return;
  FileItem item(*path);
  exifSearch(item, outKeywordResult, outTokenDateResult);
}

void SearchEngine::exifSearch(FileItem &item, char *outKeywordResult,
                              char *outTokenDateResult) const {
  *outKeywordResult = *outTokenDateResult = 0;
  const Ref<ExifAnalysis> analysis = ExifAnalysis::startExifAnalysisAtPath(item, &_bCancel);
  if (!analysis)
    return;
  if (isTokenDateSearch() != 0)
    *outTokenDateResult = isShotInRange(*analysis) ? 1 : 0;
  if (_searchPredicate->searchExifText != 0 && hasContentKeyword())
    *outKeywordResult = hasKeywordInTags(*analysis) ? 1 : 0;
  analysis->endExifAnalysis();
}

bool SearchEngine::isShotInRange(ExifAnalysis &analysis) const {
  const Ref<const NSString> text = analysis.getExifInfo(tagDateTimeOriginal);
  const std::optional<double> moment =
      text ? intervalOfNaturalLanguageDate(text->view()) : std::nullopt;
  if (!moment)
    return false;
  const auto compareWith = [&](const NSDate &date) {
    return NSDate::compareIntervals(*moment, date.timeIntervalSinceReferenceDate());
  };
  const SearchPredicate &record = *_searchPredicate;
  return (record.exifDateStart == nullptr ||
          compareWith(*record.exifDateStart) != NSOrderedAscending) &&
         (record.exifDateEnd == nullptr || compareWith(*record.exifDateEnd) != NSOrderedDescending);
}

bool SearchEngine::hasKeywordInTags(ExifAnalysis &analysis) const {
  // As `keyWordSearch` looks for it, made ready once for all tags.
  const TextPattern keyword(_searchPredicate->contentKeyword->view(),
                            keywordOptions(_searchPredicate->isDistinct));
  return std::any_of(std::begin(textTags), std::end(textTags), [&](std::uint32_t tag) {
    const Ref<const NSString> text = analysis.getExifInfo(tag);
    return text && keyword.find(text->view()).length != 0;
  });
}

char SearchEngine::PDFSearch(const NSString *path) const {
  return hasTextInPDF(path, _searchPredicate->contentKeyword, _searchPredicate->isDistinct) ? 1 : 0;
}

bool SearchEngine::hasTextInPDF(const NSString *path, const NSString *keyword,
                                char isDistinct) const {
  if (path == nullptr || _bCancel != 0)
    return false;
  bool isFound = false;
  tryTwice([&] {
    const unsigned shortages = MemoryShortage::count();
    CPDFFile document;
    document.StopWhen(&_bCancel);
    isFound = document.Open(path->UTF8String()) == 1 &&
              document.FindText(keyword, isDistinct, getSearchEncoding()) == 1;
    if (!isFound && MemoryShortage::count() != shortages)
      throw std::bad_alloc();
  });
  return isFound;
}

const SearchEngine::ContentAnswers::Exif &SearchEngine::askExif(SearchItem &item,
                                                                ContentAnswers &answers) const {
  if (!answers.exif) {
    char hasKeyword = 0;
    char hasDate = 0;
    exifSearch(item.file, &hasKeyword, &hasDate);
    answers.exif = {hasKeyword != 0, hasDate != 0};
  }
  return *answers.exif;
}

bool SearchEngine::askPDF(SearchItem &item, ContentAnswers &answers) const {
  // The status as it is before the file is read.
  static_cast<void>(item.file.status());
  if (!answers.hasPDFText)
    answers.hasPDFText = PDFSearch(item.path().get()) != 0;
  return *answers.hasPDFText;
}

bool SearchEngine::meetsContentConditions(SearchItem &item, bool testsPDF,
                                          ContentAnswers &answers) const {
  const bool hasExifKeyword = _searchPredicate->searchExifText != 0 && hasContentKeyword();
  if (isPDFSearch() != 0 && isExifSearch() != 0) {
    if (!askExif(item, answers).hasKeyword && !askPDF(item, answers))
      return false;
  } else {
    if (testsPDF && !askPDF(item, answers))
      return false;
    if (hasExifKeyword && !askExif(item, answers).hasKeyword)
      return false;
  }
  if (isTokenDateSearch() != 0 && !askExif(item, answers).hasDate)
    return false;
  answers.file = item.file.status();
  return true;
}
