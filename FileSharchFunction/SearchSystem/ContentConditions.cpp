#include "FileSharchFunction/SearchSystem/ContentConditions.h"

#include "FileSharchFunction/SearchSystem/EntryFilters.h"
#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"
#include "FileSharchFunction/SearchSystem/LocaleEncoding.h"
#include "pdf_reader/CPDFFile.h"
#include "platform/content/OpenedPhotograph.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NaturalLanguageDate.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/TextPattern.h"
#include "platform/foundation/TryTwice.h"
#include "platform/imagetag/TagInfo.h"

#include <algorithm>
#include <functional>
#include <utility>

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

bool ContentConditions::meets(SearchItem &item, ContentTest test, ContentAnswers &answers) const {
  ContentVerdict verdict = judge(item, test, answers);
  if (verdict == ContentVerdict::PhotographDecides) {
    readPhotograph(item, answers);
    verdict = judge(item, test, answers);
  }
  item.photograph = {};
  return verdict == ContentVerdict::Meets;
}

ContentVerdict ContentConditions::judgeAll(SearchItem &item, bool testsPDF,
                                           ContentAnswers &answers) const {
  const auto hasText = [&] {
    // The status before the file is read.
    static_cast<void>(item.file.status());
    return hasTextInPDF(item, answers);
  };
  if (search_.isPDFSearch() != 0 && search_.isExifSearch() != 0) {
    if (!tagsOf(item, answers).hasKeyword) {
      const ContentVerdict verdict = verdictWithoutExif(item, answers);
      if (verdict != ContentVerdict::Fails || !hasText())
        return verdict;
    }
  } else {
    if (testsPDF && !hasText())
      return ContentVerdict::Fails;
    if (wantsExifKeyword() && !tagsOf(item, answers).hasKeyword)
      return verdictWithoutExif(item, answers);
  }
  if (search_.isTokenDateSearch() != 0 && !tagsOf(item, answers).hasDate)
    return verdictWithoutExif(item, answers);
  answers.file = item.file.status();
  return ContentVerdict::Meets;
}

ContentVerdict ContentConditions::judgeAny(SearchItem &item, ContentAnswers &answers) const {
  if (search_.isPDFSearch() != 0 && hasTextInPDF(item, answers))
    return ContentVerdict::Meets;
  if (search_.isExifSearch() == 0 && search_.isTokenDateSearch() == 0)
    return ContentVerdict::Fails;
  const ExifAnswers &found = tagsOf(item, answers);
  return found.hasKeyword || found.hasDate ? ContentVerdict::Meets
                                           : verdictWithoutExif(item, answers);
}

const ExifAnswers &ContentConditions::tagsOf(SearchItem &item, ContentAnswers &answers) const {
  if (!answers.exif)
    answers.exif = readTags(item);
  return *answers.exif;
}

bool ContentConditions::hasTextInPDF(SearchItem &item, ContentAnswers &answers) const {
  if (!answers.hasPDFText)
    answers.hasPDFText = hasTextInPDF(item);
  return *answers.hasPDFText;
}

ContentVerdict ContentConditions::verdictWithoutExif(const SearchItem &item,
                                                     const ContentAnswers &answers) const noexcept {
  return mayBeRead(item) && !answers.isPhotographRead ? ContentVerdict::PhotographDecides
                                                      : ContentVerdict::Fails;
}

bool ContentConditions::mayBeRead(const SearchItem &item) const noexcept {
  return search_.contentService() != nullptr &&
         FileKinds::isPhotograph(extensionOfName(item.file.name()));
}

void ContentConditions::readPhotograph(SearchItem &item, ContentAnswers &answers) const {
  PhotographToRead photograph{.path = item.path().get(), .file = std::move(item.photograph)};
  const auto take = [&](std::size_t, ExifAnswers deep) { addDeep(answers, deep); };
  readPhotographs({&photograph, 1}, std::ref(take));
}

void ContentConditions::readPhotographs(
    std::span<PhotographToRead> photographs,
    const std::function<void(std::size_t, ExifAnswers)> &take) const noexcept {
  const SearchPredicate &record = *search_._searchPredicate;
  PhotographQuestion question;
  if (wantsExifKeyword())
    question.keyword = record.contentKeyword;
  question.isDistinct = record.isDistinct != 0;
  question.wantsDate = search_.isTokenDateSearch() != 0;
  const auto takeContent = [&](std::size_t place, const PhotographContent &content) {
    ExifAnswers found;
    found.hasKeyword = content.holds;
    found.hasDate =
        question.wantsDate && content.date &&
        EntryFilters::isInRange(*content.date, record.exifDateStart, record.exifDateEnd);
    take(place, found);
  };
  search_.contentService()->readPhotographs(photographs, question, std::ref(takeContent));
}

void ContentConditions::addDeep(ContentAnswers &answers, ExifAnswers deep) noexcept {
  answers.isPhotographRead = true;
  if (answers.exif) {
    answers.exif->hasKeyword |= deep.hasKeyword;
    answers.exif->hasDate |= deep.hasDate;
  }
}

ExifAnswers ContentConditions::readExif(SearchItem &item) const {
  ContentAnswers answers;
  const ExifAnswers &found = tagsOf(item, answers);
  const bool isAnswered = (!wantsExifKeyword() || found.hasKeyword) &&
                          (search_.isTokenDateSearch() == 0 || found.hasDate);
  if (!isAnswered && verdictWithoutExif(item, answers) == ContentVerdict::PhotographDecides)
    readPhotograph(item, answers);
  return found;
}

ExifAnswers ContentConditions::readTags(SearchItem &item) const {
  Ref<ExifAnalysis> analysis;
  if (!mayBeRead(item)) {
    analysis = ExifAnalysis::startExifAnalysisAtPath(item.file, &search_._bCancel);
  } else if (search_._bCancel == 0) {
    item.photograph = openedFile(item.file);
    const std::optional<FileStatus> &status = item.file.status();
    if (item.photograph && status)
      analysis = ExifAnalysis::startExifAnalysisOfFile(item.photograph.descriptor.number(),
                                                       status->size, &search_._bCancel);
  }
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
