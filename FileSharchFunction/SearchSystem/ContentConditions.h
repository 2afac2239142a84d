#pragma once

#include "FileSharchFunction/SearchSystem/RunningSearch.h"
#include "FileSharchFunction/SearchSystem/SearchItem.h"
#include "platform/foundation/FileStatus.h"

#include <optional>

namespace searchsystem {

class ExifAnalysis;

/// What the EXIF tags of a file hold: the content keyword, a shooting date in the range.
struct ExifAnswers {
  bool hasKeyword = false, hasDate = false;
};

/// What is known about the content of one file. Each question is asked at most once.
struct ContentAnswers {
  /// The file as it was before it was tested.
  std::optional<FileStatus> file;
  std::optional<ExifAnswers> exif;
  std::optional<bool> hasPDFText;
};

/// Which conditions on the content of a file decide.
struct ContentTest {
  bool mustMeetAll = false;
  /// Where all must be met: whether a sole condition on PDF text counts.
  bool testsPDF = false;
};

/// A request's conditions on the content of files: a keyword in their EXIF text or PDF text, a
/// range of shooting dates. In a deep search a condition also holds if the deep reader says so: it
/// is asked where the plain one has said no. A cancel ends the reading of a file.
///
/// Ownership: borrows the search. Threads: any. All but `hasTextInPDF` for any keyword need the
/// request.
class ContentConditions {
public:
  explicit ContentConditions(const RunningSearch &search) noexcept : search_(search) {}

  [[nodiscard]] bool hasKeyword() const noexcept;

  /// Throws `std::bad_alloc`.
  [[nodiscard]] bool meets(SearchItem &item, ContentTest test, ContentAnswers &answers) const {
    return test.mustMeetAll ? meetsAll(item, test.testsPDF, answers) : meetsAny(item);
  }

  /// Whether a file meets all conditions. A sole condition on PDF text counts only if `testsPDF`.
  /// Throws `std::bad_alloc`.
  [[nodiscard]] bool meetsAll(SearchItem &item, bool testsPDF, ContentAnswers &answers) const;

  /// Whether a file meets any condition. Throws `std::bad_alloc`.
  [[nodiscard]] bool meetsAny(SearchItem &item) const;

  /// Reads the EXIF tags of a file for what the request asks of them. Throws `std::bad_alloc`.
  [[nodiscard]] ExifAnswers readExif(FileItem &item) const;

  /// Whether the content keyword occurs in the text of a PDF file. Throws `std::bad_alloc`.
  [[nodiscard]] bool hasTextInPDF(SearchItem &item) const;
  /// The same for any keyword, by the plain reader.
  [[nodiscard]] bool hasTextInPDF(const NSString &path, const NSString *keyword,
                                  char isDistinct) const;

private:
  [[nodiscard]] bool wantsExifKeyword() const noexcept;
  [[nodiscard]] bool hasTextDeepInDocument(SearchItem &item) const;
  [[nodiscard]] bool isShotInRange(ExifAnalysis &analysis) const;
  [[nodiscard]] bool hasKeywordInTags(ExifAnalysis &analysis) const;

  const RunningSearch &search_;
};

} // namespace searchsystem
