#pragma once

#include "FileSharchFunction/SearchSystem/EntryTest.h"
#include "FileSharchFunction/SearchSystem/FolderAhead.h"
#include "FileSharchFunction/SearchSystem/ReadAhead.h"
#include "FileSharchFunction/SearchSystem/ResultMessage.h"
#include "FileSharchFunction/SearchSystem/ResultPool.h"
#include "FileSharchFunction/SearchSystem/SearchItem.h"
#include "FileSharchFunction/SearchSystem/SearchSystem.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSThread.h"
#include "platform/foundation/Perform.h"
#include "platform/foundation/Ref.h"
#include "platform/metadata/NSMetadataQuery.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

class ExifAnalysis;

/// The object that runs a search: it checks the request, chooses the strategy, judges candidates,
/// delivers results, and tells when all of it has ended. There is at most one at a time, made by
/// the first start or cancel and released by the end process.
///
/// Ownership: borrows the request record until the end process. Pending performs, timers and
/// workers hold references to the engine, which gives them back on the main thread. A search ends
/// only when its workers have; those of the PDF pool and the threads that read ahead, which no
/// search waits for, use nothing of the record, but what the engine has taken from it. Threads:
/// main, but for the workers' bodies and what they call, where that is said.
class SearchEngine final : public NSObject {
public:
  /// The engine, made if there is none; null when memory is short. It stays the class's.
  static SearchEngine *sharedSearchEngine() noexcept;

  /// Takes the engine, if there is one, out of the class and gives back its reference. What is
  /// still on its way to it finds nobody who listens.
  static void releaseSharedSearchEngine() noexcept;

  /// Whether the system has a metadata index that the host allows to be used.
  static char isAvailableSpotlight() noexcept;

  /// Starts a search; while one runs, or its end is on the way, cancels that instead.
  void startFileSearch(const SearchPredicate *predicate) noexcept;

  /// Sets the cancel flag, which workers poll, and stops a running query.
  void setSearchCancel(char flag) noexcept;

  /// Whether the request names a condition at all.
  [[nodiscard]] char checkSearchParam() const noexcept;

  /// Whether the request has a condition on EXIF text, on PDF text, on shooting dates. Any thread.
  [[nodiscard]] char isExifSearch() const noexcept;
  [[nodiscard]] char isPDFSearch() const noexcept;
  [[nodiscard]] char isTokenDateSearch() const noexcept;

  /// The Core Foundation encoding in which PDF text is searched. Any thread.
  [[nodiscard]] std::uint32_t getSearchEncoding() const noexcept;

  /// Takes one message from a producer: applies the content conditions that all candidates must
  /// meet, hands what is left to the host, and finds out whether the search is over. Null is
  /// ignored. A message that arrives while another is handled, as from a main loop that the host's
  /// callback runs, waits until that is done.
  void searchResultDistribution(const ResultMessage *message) noexcept;

  /// 1 when the path has not been delivered in this search, or memory is too short to tell.
  [[nodiscard]] char checkDuplicatePath(const NSString *path) noexcept;

  /// 1 for an alias, a link, the root of a mounted file system, and what cannot be examined.
  /// Any thread.
  [[nodiscard]] char isAlias(const NSString *path) const noexcept;

  /// 1 for a visible file with an extension of the class `type` (0 tif and jpg, 1 pdf, 2 pdf and
  /// jpg, 3 tif, jpg, pdf and pct; any other nothing). `*isFolder` becomes 1 for a folder that may
  /// be searched, which is never accepted itself, else 0. Throws `std::bad_alloc`. Any thread.
  char defaultFilter(const NSString *path, int type, char *isFolder) const;

  /// Whether the item's own modification date lies in the range, both ends included; null leaves an
  /// end open, and an item without a date passes. Any thread.
  [[nodiscard]] char fileModDateSearch(const NSString *path, const NSDate *startDate,
                                       const NSDate *endDate) const noexcept;

  /// Whether the keyword occurs in the text; an empty one never does, and nothing in a null text.
  /// Throws `std::bad_alloc`. Any thread.
  [[nodiscard]] char keyWordSearch(const NSString *text, const NSString *keyword,
                                   char isDistinct) const;

  /// Searches through the metadata index, and beside it, where any condition suffices, walks for
  /// those on content.
  void spotlightSearch() noexcept;
  /// The query has new results.
  void getSpotlightResult(const NSNotification *notification) noexcept;
  /// Hands on the query's results that have not been looked at.
  void picUpResultData() noexcept;
  /// The query has ended (with its notification), or is to end now (with null).
  void stopSpotlight(const NSNotification *notification) noexcept;

  /// Searches by walking the folder, or through the request's list of files.
  void manuallyFileSearch() noexcept;
  /// Queues a folder for the walk, or, with null, takes note that a worker has ended.
  void manualSearchPool(const NSString *folder) noexcept;
  /// A worker's body: searches one folder. Worker thread.
  void manualSearchThread(const NSString *folder) noexcept;

  /// Searches one folder, or the list, for files of a class that meet every condition, or any one.
  /// Worker thread.
  void andSearch(const NSString *folder, int type) noexcept;
  void orSearch(const NSString *folder, int type) noexcept;

  /// Queues a folder for the content walk, or, with null, takes note that a worker has ended.
  void spotligtExifPDFSearchPool(const NSString *folder) noexcept;
  /// A worker's body: searches one folder for content. Worker thread.
  void spotligtExifPDFSearchThread(const NSString *folder) noexcept;
  /// Searches one folder for files of a class that meet the conditions on content. Worker thread.
  void exifSearchWithSpotlight(const NSString *folder, int type) noexcept;

  /// Looks for the content keyword in the EXIF text of a file, and for its shooting date in the
  /// range. Both results are always written. Throws `std::bad_alloc`. Any thread.
  void exifSearch(const NSString *path, char *outKeywordResult, char *outTokenDateResult) const;
  /// Whether the content keyword occurs in the text of a PDF file. Throws `std::bad_alloc`. Any
  /// thread.
  [[nodiscard]] char PDFSearch(const NSString *path) const;

  /// Queues a PDF file for a worker, or, with null, takes note that a worker has ended. A search
  /// neither uses this pool nor waits for it.
  void PDFSearchPool(const NSString *path) noexcept;
  /// A worker's body: tests one PDF file, whatever the answer. Worker thread.
  void PDFSearchThread(const NSString *path) noexcept;

private:
  friend struct SearchEngineProbe;

  using Clock = std::chrono::steady_clock;

  struct FolderSearch;
  using Conditions = bool (SearchEngine::*)(FolderSearch &, SearchItem &) const;
  /// What takes a path for a worker, or, with null, the end of one.
  using TakePath = void (SearchEngine::*)(const NSString *) noexcept;

  /// What the content tests have answered about one file, each asked at most once.
  struct ContentAnswers {
    /// The file as it was before it was tested.
    std::optional<FileStatus> file;
    struct Exif {
      bool hasKeyword, hasDate;
    };
    std::optional<Exif> exif;
    std::optional<bool> hasPDFText;
  };

  /// The search of one folder, or of the list.
  struct FolderSearch {
    /// Throws `std::bad_alloc`.
    FolderSearch(SearchEngine &searchEngine, const NSString *searchedFolder, int filterType,
                 Conditions conditionsOnFile, TakePath poolOfSubFolders);

    void addFound(const Ref<const NSString> &path);

    SearchEngine &engine;
    const SearchPredicate &record;
    const EntryTest &test;
    const NSString *const folder;
    const int type;
    const Conditions conditions;
    const TakePath pool;
    std::optional<DirectoryListing> listing;
    /// Files that are to be handed over together, and how many of them have been.
    std::vector<Ref<const NSString>> found;
    std::size_t handedOver = 0;
    /// Where content decides: when the first of them was found, and what has been asked of each.
    Clock::time_point foundAt;
    std::vector<ContentAnswers> foundAnswers;
    ResultMessage message;
    /// What has been asked of the file that is being tested.
    ContentAnswers answers;
  };

  /// A worker thread of the engine, reserved with it so that it can always be reported.
  class Worker final : public ThreadJob {
  public:
    using Body = void (SearchEngine::*)(const NSString *) noexcept;

    [[nodiscard]] bool isFree() const noexcept { return engine_ == nullptr; }
    void start(SearchEngine &engine, Ref<const NSString> folder, Body body) noexcept;

  private:
    void main() override;
    void ended() noexcept override;

    Ref<SearchEngine> engine_;
    Ref<const NSString> folder_;
    Body body_ = nullptr;
  };

  /// The worker of a folder that is read ahead, which needs no thread: it hands over what is met
  /// there, each file in a turn of the main loop.
  class WorkerAhead final : public Work {
  public:
    [[nodiscard]] bool isFree() const noexcept { return engine_ == nullptr; }
    void start(SearchEngine &engine, Ref<FolderAhead> folder) noexcept;

  private:
    void run() override;
    void finished() noexcept override;
    void queueSubFolders() noexcept;
    void tellFile() noexcept;
    [[nodiscard]] bool isUsedUp() const noexcept {
      return queued_ == findings_.subFolders.size() && told_ == findings_.files.size();
    }

    Ref<SearchEngine> engine_;
    Ref<FolderAhead> folder_;
    FolderFindings findings_;
    std::size_t queued_ = 0;
    std::size_t told_ = 0;
  };

  /// What has to wait until the host's callback has returned.
  struct Deferred {
    /// The message, or none for the stop of the query.
    std::optional<ResultMessage> message;
  };

  SearchEngine();
  ~SearchEngine() override;
  /// With a reference for the caller. Throws `std::bad_alloc`.
  static SearchEngine *create();

  /// Whether the request has any condition on the content of files. Any thread.
  [[nodiscard]] bool hasContentCondition() const noexcept;
  [[nodiscard]] bool hasContentKeyword() const noexcept;
  [[nodiscard]] bool hasTextInPDF(const NSString *path, const NSString *keyword,
                                  char isDistinct) const;

  void searchFolder(const NSString *folder, int type, Conditions conditions,
                    TakePath pool) noexcept;
  void searchList(FolderSearch &search) noexcept;
  void searchEntries(FolderSearch &search) noexcept;
  /// Adds the item to what is found, or, if it is a folder to search, to the pool.
  void searchItem(FolderSearch &search, SearchItem &item) noexcept;
  void queueSubFolder(FolderSearch &search, const Ref<const NSString> &path) noexcept;
  [[nodiscard]] bool canLookAhead(const FolderSearch &search) const noexcept;
  /// Waits until what is found has been distributed.
  void handOver(FolderSearch &search) noexcept;
  [[nodiscard]] bool meetsAll(FolderSearch &search, SearchItem &item) const;
  [[nodiscard]] bool meetsAny(FolderSearch &search, SearchItem &item) const;
  [[nodiscard]] bool meetsContent(FolderSearch &search, SearchItem &item) const;
  [[nodiscard]] bool meetsAnyContentCondition(SearchItem &item) const;

  /// One more than can run: a worker that reports its end is still in its place when the next is
  /// started.
  static constexpr std::size_t workerCount = 6;
  using Workers = std::array<Worker, workerCount>;
  using Pool = ReadAhead::Pool;

  [[nodiscard]] bool startWorker(Workers &workers, const Ref<const NSString> &path,
                                 Worker::Body body) noexcept;
  [[nodiscard]] bool startWorkerAhead(const Ref<FolderAhead> &folder) noexcept;
  /// Puts `path` at the end of the pool, or, with null, counts a worker less; then starts a worker
  /// on the first of the pool, if one may be. `ahead` is null where the pool is not read ahead.
  void addToPool(const NSString *path, Pool &pool, int &threadCount, Workers &workers,
                 Worker::Body body, ReadAhead *ahead) noexcept;
  /// Makes the test of entries for the request; none where memory is short.
  void makeEntryTest() noexcept;
  /// A worker's body has come to its end: tells the pool, on the main thread.
  template <TakePath pool> static void toldEnd(void *engine) noexcept {
    (static_cast<SearchEngine *>(engine)->*pool)(nullptr);
  }
  template <TakePath pool> void endWorker() noexcept {
    ThreadJob::performAtExit(toldEnd<pool>, this);
  }
  /// The walk, the pool or the query has ended.
  void reportProducerEnd() noexcept;

  void defer(Deferred deferred) noexcept;
  void distribute(const ResultMessage &message) noexcept;
  void exifSearch(FileItem &item, char *outKeywordResult, char *outTokenDateResult) const;
  [[nodiscard]] bool isShotInRange(ExifAnalysis &analysis) const;
  [[nodiscard]] bool hasKeywordInTags(ExifAnalysis &analysis) const;
  [[nodiscard]] const ContentAnswers::Exif &askExif(SearchItem &item,
                                                    ContentAnswers &answers) const;
  [[nodiscard]] bool askPDF(SearchItem &item, ContentAnswers &answers) const;
  /// Whether a file meets all the conditions on its content; `testsPDF` tells whether one on PDF
  /// text alone counts among them. Throws `std::bad_alloc`. Any thread.
  [[nodiscard]] bool meetsContentConditions(SearchItem &item, bool testsPDF,
                                            ContentAnswers &answers) const;
  /// Distributes the next file that is found; whether there is another.
  [[nodiscard]] bool distributeFound(FolderSearch &search) noexcept;

  void startContentWalk() noexcept;
  /// Has the index queried, if it can decide anything; false when the query refuses to start.
  /// Throws `std::bad_alloc`.
  [[nodiscard]] bool poseQuery();
  /// Poses a query with these conditions to the index; whether it has started.
  [[nodiscard]] bool startQuery(std::vector<Ref<const NSPredicate>> conditions);
  [[nodiscard]] bool isOfAnotherQuery(const NSNotification *notification) const noexcept;
  /// The folder of the search as the query's results write it.
  [[nodiscard]] std::string baseFolder() const;
  [[nodiscard]] bool shouldDeliver(const NSString *path);
  void deliver(const NSString *path) noexcept;

  /// From the last worker of a walk or pool to the report of its end.
  static constexpr double delayOfProducerEnd = 1.0;

  static SearchEngine *sSharedSearchEngine;

  // Main thread, but for what is atomic. A worker reads the request and the flags of its search,
  // which stay as they are until every worker has ended.
  Ref<NSMetadataQuery> _metaQuery;
  char _isSearching = 0;
  std::atomic<char> _bCancel{0};
  char _isUseSpotlight = 0;
  char _isSearchSpotlight = 0;
  char _isExifSearch = 0;
  char _isEndWait = 0;
  char _isStopSpotligth = 0;
  const SearchPredicate *_searchPredicate = nullptr;
  int _resultCheckCount = 0;
  ResultPool _resultPoolArray;
  const NSString *_defaultPath = nullptr;
  char _isCheckSubFolder = 0;
  NSLock _lock;
  [[maybe_unused]] std::vector<Ref<const NSString>> _subDirList;
  int _endCount = 0;
  std::atomic<int> _returnCount{0};
  int _getCount = 0;
  int _threadCount = 0;
  Pool _dirPool;
  int _pdfThreadCount = 0;
  Pool _pdfPool;
  /// What the workers of the PDF pool look for; constant while there are any.
  Ref<const NSString> pdfKeyword_;
  char isPDFDistinct_ = 0;

  /// What a worker of an explicit list is started on.
  const Ref<const NSString> listFolder_;
  /// That of the running search.
  std::optional<EntryTest> entryTest_;
  ReadAhead readAhead_{*this, _bCancel};
  Workers workers_;
  std::array<WorkerAhead, workerCount> workersAhead_;
  Workers pdfWorkers_;
  ReservedPerform<SearchEngine> walkEnd_{*this, &SearchEngine::reportProducerEnd};
  ReservedPerform<SearchEngine> pdfPoolEnd_{*this, &SearchEngine::reportProducerEnd};

  /// While a worker's match is distributed, what the worker has found out about the file.
  ContentAnswers *knownAnswers_ = nullptr;

  /// How many deferred messages other than results there can be, for which room is kept.
  static constexpr std::size_t reservedDeferrals = 8;
  /// A message is being handled; others, and the stop of the query, wait in `deferred_`.
  bool isDistributing_ = false;
  std::vector<Deferred> deferred_;
};
