#pragma once

#include "FileSharchFunction/SearchSystem/Distribution.h"
#include "FileSharchFunction/SearchSystem/FolderScan.h"
#include "FileSharchFunction/SearchSystem/RequestFilter.h"
#include "FileSharchFunction/SearchSystem/RunningSearch.h"
#include "FileSharchFunction/SearchSystem/WorkerPool.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/metadata/NSMetadataQuery.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace searchsystem {

/// The engine: it checks the request and chooses the strategy, query or walk, and connects the
/// objects that do the work (`WorkerPool`, `FolderScan`, `ContentConditions`, `Distribution`).
/// There is at most one, made by the first start or cancel; it runs one search and is released at
/// the end of that.
///
/// Ownership: borrows the request until the end. Pending performs, timers and workers hold
/// references to the engine, which they release on the main thread. A search waits for the
/// workers of its walk; those of the PDF pool and the threads that read ahead may outlive the
/// request, and use only copies of it. Threads: main, except where stated.
class SearchEngine final : public RunningSearch {
public:
  /// The engine, made if there is none; null when memory is short. It stays the class's.
  static SearchEngine *sharedSearchEngine() noexcept;

  /// Whether the system has a metadata index and the host allows its use.
  static char isAvailableSpotlight() noexcept;

  /// Starts a search. While one runs, or its end is on the way, cancels that instead.
  void startFileSearch(const SearchPredicate *predicate) noexcept;

  /// Sets the cancel flag, which workers poll, and stops a running query and deep reading.
  void setSearchCancel(char flag) noexcept;

  /// Whether the request names a condition at all.
  [[nodiscard]] char checkSearchParam() const noexcept;

  /// The Core Foundation encoding in which PDF text is searched. Any thread.
  [[nodiscard]] std::uint32_t getSearchEncoding() const noexcept;

  /// As `Distribution::take`.
  void searchResultDistribution(const ResultMessage *message) noexcept;

  /// As `Distribution::checkDuplicatePath`.
  [[nodiscard]] char checkDuplicatePath(const NSString *path) noexcept;

  /// 1 for an alias, a link, the root of a mounted file system, and what cannot be examined.
  /// Any thread.
  [[nodiscard]] char isAlias(const NSString *path) const noexcept;

  /// 1 for a visible file with an extension of the class `type`: 0 tif and jpg, 1 pdf, 2 pdf and
  /// jpg, 3 tif, jpg, pdf and pct, and in a deep search as `FileKinds` says; any other nothing.
  /// `*isFolder` becomes 1 for a folder that may be searched, which is never accepted itself, else
  /// 0. Throws `std::bad_alloc`. Any thread.
  char defaultFilter(const NSString *path, int type, char *isFolder) const;

  /// Whether the item's own modification date lies in the range, both ends included; null leaves an
  /// end open, and an item without a date passes. Any thread.
  [[nodiscard]] char fileModDateSearch(const NSString *path, const NSDate *startDate,
                                       const NSDate *endDate) const noexcept;

  /// Whether the keyword occurs in the text; an empty one never does, and nothing in a null text.
  /// Throws `std::bad_alloc`. Any thread.
  [[nodiscard]] char keyWordSearch(const NSString *text, const NSString *keyword,
                                   char isDistinct) const;
  /// Searches through the metadata index. Where any condition suffices, a walk beside it looks for
  /// those on content.
  void spotlightSearch() noexcept;
  /// The query has new results.
  void getSpotlightResult(const NSNotification *notification) noexcept;
  /// Distributes the new results of the query.
  void picUpResultData() noexcept;
  /// The query has ended (with its notification), or is to end now (with null).
  void stopSpotlight(const NSNotification *notification) noexcept;

  /// Searches by walking the folder, or through the request's list of files.
  void manuallyFileSearch() noexcept;
  /// Queues a folder for the walk, or, with null, notes that a worker has ended.
  void manualSearchPool(const NSString *folder) noexcept;
  /// A worker's body: searches one folder. Worker thread.
  void manualSearchThread(const NSString *folder) noexcept;

  /// Searches one folder, or the list, for files of a class that meet every condition, or any one.
  /// Worker thread.
  void andSearch(const NSString *folder, int type) noexcept;
  void orSearch(const NSString *folder, int type) noexcept;

  /// Queues a folder for the content walk, or, with null, notes that a worker has ended.
  void spotligtExifPDFSearchPool(const NSString *folder) noexcept;
  /// A worker's body: searches one folder for content. Worker thread.
  void spotligtExifPDFSearchThread(const NSString *folder) noexcept;
  /// Searches one folder for files of a class that meet the conditions on content. Worker thread.
  void exifSearchWithSpotlight(const NSString *folder, int type) noexcept;

  /// Looks for the content keyword in the EXIF text of a file, and for its shooting date in the
  /// range; in a deep search in all that a photograph says about itself. Both results are always
  /// written. Throws `std::bad_alloc`. Any thread.
  void exifSearch(const NSString *path, char *outKeywordResult, char *outTokenDateResult) const;
  /// Whether the content keyword occurs in the text of a PDF file, or, in a deep search, of a
  /// document of any make. Throws `std::bad_alloc`. Any thread.
  [[nodiscard]] char PDFSearch(const NSString *path) const;

  /// Queues a PDF file for a worker, or, with null, notes that a worker has ended. A search neither
  /// uses this pool nor waits for it.
  void PDFSearchPool(const NSString *path) noexcept;
  /// A worker's body: tests one PDF file and ignores the answer. Worker thread.
  void PDFSearchThread(const NSString *path) noexcept;

private:
  friend struct SearchEngineProbe;

  SearchEngine();
  ~SearchEngine() override;
  /// With a reference for the caller. Throws `std::bad_alloc`.
  static SearchEngine *create();

  void stopQuery() noexcept override;

  /// A method as the handler of a notification.
  template <void (SearchEngine::*method)(const NSNotification *) noexcept>
  static void handle(void *engine, const NSNotification &notification) {
    (static_cast<SearchEngine *>(engine)->*method)(&notification);
  }
  /// A method as the body of a pool's workers.
  template <void (SearchEngine::*method)(const NSString *) noexcept>
  static void call(RunningSearch &engine, const NSString *path) noexcept {
    (static_cast<SearchEngine &>(engine).*method)(path);
  }
  /// A worker's body has come to its end: notes that on the main thread.
  template <void (SearchEngine::*pool)(const NSString *) noexcept> void endWorker() noexcept {
    ThreadJob::performAtExit(
        [](void *engine) { (static_cast<SearchEngine *>(engine)->*pool)(nullptr); }, this);
  }

  void makeFilter() noexcept;
  void scan(const NSString *folder, int type, FolderScan::Wanted wanted) noexcept;
  void startContentWalk() noexcept;

  /// Has the index queried, if it can decide anything; false when the query refuses to start.
  /// Throws `std::bad_alloc`.
  [[nodiscard]] bool poseQuery();
  /// Poses a query with these conditions to the index; whether it has started.
  [[nodiscard]] bool startQuery(std::vector<Ref<const NSPredicate>> conditions);
  [[nodiscard]] bool isOfAnotherQuery(const NSNotification *notification) const noexcept;
  /// The folder of the search as the query's results write it.
  [[nodiscard]] std::string baseFolder() const;

  Ref<NSMetadataQuery> _metaQuery;
  char _isSearchSpotlight = 0;
  char _isExifSearch = 0;
  char _isStopSpotligth = 0;
  int _resultCheckCount = 0;
  const NSString *_defaultPath = nullptr;
  char _isCheckSubFolder = 0;
  [[maybe_unused]] std::vector<Ref<const NSString>> _subDirList;
  /// None until the walk begins, and where memory is too short for it.
  std::optional<RequestFilter> filter_;
  Distribution distribution_{*this};
  int _threadCount = 0;
  WorkerPool _dirPool{*this, distribution_, _threadCount};
  int _pdfThreadCount = 0;
  WorkerPool _pdfPool{*this, distribution_, _pdfThreadCount};
  /// What the workers of the PDF pool look for; constant while there are any.
  Ref<const NSString> pdfKeyword_;
  char isPDFDistinct_ = 0;
  /// What a worker of an explicit list is started on.
  const Ref<const NSString> listFolder_;
};

} // namespace searchsystem
