#include "FileSharchFunction/SearchSystem/ContentConditions.h"

#include "FileSharchFunction/SearchSystem/EntryFilters.h"
#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"
#include "FileSharchFunction/SearchSystem/LocaleEncoding.h"
#include "pdf_reader/CPDFFile.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NaturalLanguageDate.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/TextPattern.h"
#include "platform/foundation/TryTwice.h"
#include "platform/imagetag/TagInfo.h"

#include <algorithm>

namespace searchsystem {

namespace {

/// Image description, make, model, user comment.
constexpr std::uint32_t textTags[] = {0x010E, 0x010F, 0x0110, 0x9286};

} // namespace

bool ContentConditions::hasKeyword() const noexcept {
  const NSString *const keyword = search_._searchPredicate->contentKeyword;
  return keyword != nullptr && keyword->length() != 0;
}

bool ContentConditions::wantsExifKeyword() const noexcept {
  return search_._searchPredicate->searchExifText != 0 && hasKeyword();
}

bool ContentConditions::meetsAll(SearchItem &item, bool testsPDF, ContentAnswers &answers) const {
  const auto exif = [&]() -> const ExifAnswers & {
    if (!answers.exif)
      answers.exif = readExif(item.file);
    return *answers.exif;
  };
  const auto hasPDFText = [&] {
    // The status before the file is read.
    static_cast<void>(item.file.status());
    if (!answers.hasPDFText)
      answers.hasPDFText = hasTextInPDF(item);
    return *answers.hasPDFText;
  };
  if (search_.isPDFSearch() != 0 && search_.isExifSearch() != 0) {
    if (!exif().hasKeyword && !hasPDFText())
      return false;
  } else {
    if (testsPDF && !hasPDFText())
      return false;
    if (wantsExifKeyword() && !exif().hasKeyword)
      return false;
  }
  if (search_.isTokenDateSearch() != 0 && !exif().hasDate)
    return false;
  answers.file = item.file.status();
  return true;
}

bool ContentConditions::meetsAny(SearchItem &item) const {
  if (search_.isPDFSearch() != 0 && hasTextInPDF(item))
    return true;
  if (search_.isExifSearch() == 0 && search_.isTokenDateSearch() == 0)
    return false;
  const ExifAnswers exif = readExif(item.file);
  return exif.hasKeyword || exif.hasDate;
}

ExifAnswers ContentConditions::readExif(FileItem &item) const {
  const Ref<ExifAnalysis> analysis = ExifAnalysis::startExifAnalysisAtPath(item, &search_._bCancel);
  if (!analysis)
    return {};
  ExifAnswers answers;
  answers.hasDate = search_.isTokenDateSearch() != 0 && isShotInRange(*analysis);
  answers.hasKeyword = wantsExifKeyword() && hasKeywordInTags(*analysis);
  analysis->endExifAnalysis();
  return answers;
}

bool ContentConditions::isShotInRange(ExifAnalysis &analysis) const {
  const Ref<const NSString> text = analysis.getExifInfo(tagDateTimeOriginal);
  const std::optional<double> shot =
      text ? intervalOfNaturalLanguageDate(text->view()) : std::nullopt;
  const SearchPredicate &record = *search_._searchPredicate;
  return shot && EntryFilters::isInRange(*shot, record.exifDateStart, record.exifDateEnd);
}

bool ContentConditions::hasKeywordInTags(ExifAnalysis &analysis) const {
  // As `keyWordSearch` looks for it, prepared once for all tags.
  const SearchPredicate &record = *search_._searchPredicate;
  const TextPattern keyword(record.contentKeyword->view(),
                            EntryFilters::keywordOptions(record.isDistinct));
  return std::any_of(std::begin(textTags), std::end(textTags), [&](std::uint32_t tag) {
    const Ref<const NSString> text = analysis.getExifInfo(tag);
    return text && keyword.find(text->view()).length != 0;
  });
}

bool ContentConditions::hasTextInPDF(SearchItem &item) const {
  const SearchPredicate &record = *search_._searchPredicate;
  return hasTextInPDF(*item.path(), record.contentKeyword, record.isDistinct) ||
         hasTextDeepInDocument(item);
}

bool ContentConditions::hasTextDeepInDocument(SearchItem &item) const {
  ContentService *const service = search_.contentService();
  if (service == nullptr || !hasKeyword() ||
      !FileKinds::isDocument(extensionOfName(item.file.name())))
    return false;
  const SearchPredicate &record = *search_._searchPredicate;
  return service->documentHolds(*item.path(), *record.contentKeyword, record.isDistinct != 0).holds;
}

bool ContentConditions::hasTextInPDF(const NSString &path, const NSString *keyword,
                                     char isDistinct) const {
  if (search_._bCancel != 0)
    return false;
  bool isFound = false;
  tryTwice([&] {
    CPDFFile document;
    document.StopWhen(&search_._bCancel);
    isFound = document.open(path.UTF8String()) &&
              document.findText(keyword, isDistinct != 0, encodingForLocale(GetCurrentLocaleID()));
  });
  return isFound;
}

} // namespace searchsystem
