#pragma once

#include "FileSharchFunction/SearchSystem/RunningSearch.h"
#include "FileSharchFunction/SearchSystem/SearchItem.h"
#include "platform/foundation/FileStatus.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>

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
  /// Whether they are the deep reader's, too.
  bool isPhotographRead = false;
  std::optional<bool> hasPDFText;
};

/// Which conditions on the content of a file decide.
struct ContentTest {
  bool mustMeetAll = false;
  /// Where all must be met: whether a sole condition on PDF text counts.
  bool testsPDF = false;
};

/// What answers say about a file: they may leave the decision to a deep reading of a photograph.
enum class ContentVerdict { Fails, Meets, PhotographDecides };

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

  /// Whether a file meets its conditions: all, or any. Throws `std::bad_alloc`.
  [[nodiscard]] bool meets(SearchItem &item, ContentTest test, ContentAnswers &answers) const;

  /// The same, but has no photograph read deep: `readPhotographs` does that for several at once,
  /// and then this decides; the item's file may be open for that. Throws `std::bad_alloc`.
  [[nodiscard]] ContentVerdict judge(SearchItem &item, ContentTest test,
                                     ContentAnswers &answers) const {
    return test.mustMeetAll ? judgeAll(item, test.testsPDF, answers) : judgeAny(item, answers);
  }

  /// Has photographs read deep. What is found in each is handed to `take` with its place among
  /// them, one after another. `take` is to be made of a reference, `std::ref`, so that making it
  /// takes no memory.
  void readPhotographs(std::span<PhotographToRead> photographs,
                       const std::function<void(std::size_t, ExifAnswers)> &take) const noexcept;
  /// Adds what a deep reading has found.
  static void addDeep(ContentAnswers &answers, ExifAnswers deep) noexcept;

  /// What the EXIF tags of a file hold of what the request asks, or in a deep search any field of a
  /// photograph. Throws `std::bad_alloc`.
  [[nodiscard]] ExifAnswers readExif(SearchItem &item) const;

  /// Whether the content keyword occurs in the text of a PDF file. Throws `std::bad_alloc`.
  [[nodiscard]] bool hasTextInPDF(SearchItem &item) const;
  /// The same for any keyword, by the plain reader.
  [[nodiscard]] bool hasTextInPDF(const NSString &path, const NSString *keyword,
                                  char isDistinct) const;

private:
  [[nodiscard]] ContentVerdict judgeAll(SearchItem &item, bool testsPDF,
                                        ContentAnswers &answers) const;
  [[nodiscard]] ContentVerdict judgeAny(SearchItem &item, ContentAnswers &answers) const;
  [[nodiscard]] const ExifAnswers &tagsOf(SearchItem &item, ContentAnswers &answers) const;
  [[nodiscard]] ExifAnswers readTags(SearchItem &item) const;
  [[nodiscard]] bool hasTextInPDF(SearchItem &item, ContentAnswers &answers) const;
  /// What is said of a file that the EXIF conditions have failed so far.
  [[nodiscard]] ContentVerdict verdictWithoutExif(const SearchItem &item,
                                                  const ContentAnswers &answers) const noexcept;
  void readPhotograph(SearchItem &item, ContentAnswers &answers) const;
  [[nodiscard]] bool mayBeRead(const SearchItem &item) const noexcept;
  [[nodiscard]] bool wantsExifKeyword() const noexcept;
  [[nodiscard]] bool hasTextDeepInDocument(SearchItem &item) const;
  [[nodiscard]] bool isShotInRange(ExifAnalysis &analysis) const;
  [[nodiscard]] bool hasKeywordInTags(ExifAnalysis &analysis) const;

  const RunningSearch &search_;
};

} // namespace searchsystem
