#pragma once

#include "FileSharchFunction/SearchSystem/ContentConditions.h"
#include "FileSharchFunction/SearchSystem/Distribution.h"
#include "FileSharchFunction/SearchSystem/FileAhead.h"
#include "FileSharchFunction/SearchSystem/RequestFilter.h"
#include "FileSharchFunction/SearchSystem/WorkerPool.h"
#include "platform/foundation/DirectoryListing.h"

#include <chrono>
#include <list>
#include <optional>
#include <vector>

namespace searchsystem {

/// A worker's look through one folder, or through the request's list of files: it judges each
/// item, queues sub-folders, and hands over the files that match, in the order of the listing.
///
/// In a deep search where content decides, the next files are tested ahead, by whatever thread is
/// free. A match is handed over as soon as all files before it are decided, and waits for none
/// behind it.
///
/// Ownership: borrows all it is given, for the length of `run`. Threads: a worker's; the main
/// thread uses what is handed over while the worker waits.
class FolderScan {
public:
  /// The conditions that a file must meet: all, any one, or only those on its content (all or any
  /// one, as the request says).
  enum class Wanted { All, Any, Content };

  FolderScan(const RunningSearch &search, const RequestFilter &filter, Distribution &distribution,
             WorkerPool &pool, Wanted wanted, int type) noexcept;

  /// `folder` may be null. Where memory is short items are passed over.
  void run(const NSString *folder) noexcept;

private:
  using Clock = std::chrono::steady_clock;

  /// What name and dates say about a file.
  enum class Judgement { Fails, Matches, ContentDecides };

  void searchList(const NSArray &list) noexcept;
  void searchFolder(const NSString &folder) noexcept;
  void takeItem(SearchItem &item) noexcept;
  void takeFile(SearchItem &item);
  [[nodiscard]] Judgement judge(FileItem &file) const;
  void addFound(const Ref<const NSString> &path, const ContentAnswers &answers);

  void testAhead(SearchItem &item, Judgement judgement);
  /// Tests a file that this has taken, and others behind it if that is quick.
  void test(const Ref<FileAhead> &file) noexcept;
  /// Takes the first of the files that are tested ahead, once that is done.
  void takeFirstAhead() noexcept;
  /// Takes those at the front that have been tested.
  void takeTestedAhead() noexcept;
  void takeAllAhead() noexcept;

  [[nodiscard]] bool canLookAhead(DirectoryListing &listing) const noexcept;
  /// Waits until what has been found is distributed.
  void handOver() noexcept;
  /// Distributes the next file that has been found; whether there is another.
  [[nodiscard]] bool distributeNext() noexcept;

  const RunningSearch &search_;
  const RequestFilter &filter_;
  Distribution &distribution_;
  WorkerPool &pool_;
  const ContentConditions content_;
  const Wanted wanted_;
  const int type_;
  const ContentTest contentTest_;
  const bool testsAhead_;

  /// Files that are handed over together, and how many of them have been.
  std::vector<Ref<const NSString>> found_;
  std::size_t handedOver_ = 0;
  /// Where content decides: when the first of them was found, and what is known about each.
  Clock::time_point foundAt_;
  std::vector<ContentAnswers> foundAnswers_;
  /// Files that are tested ahead, in the order of the listing.
  std::list<Ref<FileAhead>> ahead_;
  /// Whether the folder may hold XMP files.
  bool mayHoldSidecars_ = true;
  /// How many files it tests together: more after a quick test, one after a slow one.
  std::size_t together_ = 1;
};

} // namespace searchsystem
