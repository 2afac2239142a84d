#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/metadata/FolderListing.h"
#include "platform/metadata/FolderQueue.h"
#include "platform/metadata/FolderStatus.h"
#include "platform/metadata/IndexDatabase.h"
#include "platform/metadata/IndexWriter.h"
#include "platform/metadata/NSPredicate.h"
#include "platform/metadata/Volumes.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Looks at folders for a query: finds the files that meet its predicate and the sub-folders that
/// are to be looked at next. The names in a folder come from its record in the index, as long as
/// the folder bears the moment of change that the record was made at; else from the disk, and then
/// a new record is made. Whether a folder may be searched at all is asked of the disk each time.
///
/// Ownership: borrows predicate, writer and flag; owns its connection to the index.
/// Threads: one at a time.
class FolderGatherer {
public:
  using Results = std::vector<Ref<const NSString>>;

  /// Without a place no index is used. Throws `std::bad_alloc`.
  FolderGatherer(const NSPredicate &predicate, const std::optional<IndexPlace> &place,
                 IndexWriter &writer, const std::atomic<bool> &isStopped);

  /// Does one task. `tasks` takes up those that follow from it, `results` the paths of the files
  /// that are found. Throws `std::bad_alloc`, and then something is missing from both.
  void process(const FolderTask &task, FolderQueue::Tasks &tasks, Results &results);

private:
  struct Child {
    FolderStatus status;
    std::string_view name;
  };

  void processScope(const std::string &scope);
  void processListing(const FolderTask &task);
  void processSubFolders(const FolderTask &task);

  /// Reads the names of the folder at `path_` from the disk. `above` is the folder above it, as
  /// tasks name it.
  void list(const FolderTask &above);
  /// The key of the open folder's record; none if a listing that began at `begin` cannot be kept.
  [[nodiscard]] std::optional<FolderKey> keyForRecord(const FolderStatus &status, int folder,
                                                      FileMoment begin, const FolderTask &above);
  /// Searches the names of the folder at `path_`. Its sub-folders, if it has some, become a task,
  /// which is told of `status`.
  void search(const FolderNames &names, const std::optional<FolderStatus> &status, bool areAll,
              bool isRecorded);
  void searchChild(const FolderTask &task, const Child &child,
                   std::optional<std::string_view> record);
  void addResult(std::string_view name);
  void enter(std::string_view folder, std::string_view name);
  [[nodiscard]] bool isPackage(std::string_view name, bool mayHoldContents);
  [[nodiscard]] bool isStopped() const noexcept {
    return isStopped_.load(std::memory_order_relaxed);
  }

  const NSPredicate &predicate_;
  IndexWriter &writer_;
  const std::atomic<bool> &isStopped_;
  std::unique_ptr<IndexDatabase> index_;
  Volumes volumes_;

  FolderQueue::Tasks *tasks_ = nullptr;
  Results *results_ = nullptr;

  /// The folder that is being looked at; kept, like what follows, to save allocations.
  std::string path_;
  std::string entryPath_;
  FolderListing listing_;
  std::vector<Child> children_;
};
