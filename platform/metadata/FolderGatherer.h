#pragma once

#include "platform/foundation/FileStatus.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/metadata/FolderListing.h"
#include "platform/metadata/FolderQueue.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/IndexWriter.h"
#include "platform/metadata/NSPredicate.h"
#include "platform/metadata/RecordStream.h"
#include "platform/metadata/Volumes.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// Searches folders for a query: finds the files that meet its predicate, and the sub-folders to
/// search next. It takes the names in a folder from the folder's record in the index if the change
/// time still matches; otherwise it reads them from the disk and makes a new record. It asks
/// the disk each time whether a folder may be searched at all.
///
/// Ownership: borrows the members of `Common`. Threads: one at a time.
class FolderGatherer {
public:
  using Results = RecordStream::Results;

  /// Shared by all threads of a query.
  struct Common {
    const NSPredicate &predicate;
    /// None without an index.
    const std::optional<IndexPlace> &place;
    IndexWriter &writer;
    FolderQueue &queue;
    const std::atomic<bool> &isStopped;
  };

  explicit FolderGatherer(const Common &common) noexcept : common_(common) {}

  /// Does one task. Adds the tasks that follow from it to `tasks`, and the paths of the files found
  /// to `results`. If memory is short it starts over once; if that fails too, both lack the
  /// rest.
  void process(const FolderTask &task, FolderQueue::Tasks &tasks, Results &results) noexcept;

private:
  void tryToProcess(const FolderTask &task, FolderQueue::Tasks &tasks, Results &results);
  void processScope(const std::string &scope, FolderQueue::Tasks &tasks, Results &results);
  void processRecords(const std::shared_ptr<RecordStream> &stream, FolderQueue::Tasks &tasks,
                      Results &results) noexcept;

  /// Searches the folder of a record.
  void searchRow(const RecordStream &stream, const RecordStream::Chunk &chunk,
                 RecordStream::Row &row);

  /// Searches the folder at `path_` with its names read from the disk. Returns the names, valid
  /// until the next call; none if the folder cannot be searched. `isRecorded`: the index has an
  /// outdated record of it.
  std::optional<FolderNames> list(bool isRecorded, Results &results);
  void keep(const FileStatus &status, std::int64_t volume, bool isLasting, bool isRecorded,
            const FolderNames &names);
  void listWithSubFolders(FolderQueue::Tasks &tasks, Results &results);

  /// Finds files among the names in the folder at `path_`.
  void search(const FolderNames &names, Results &results);

  /// Whether the folder at `path_`, of that name, is the root of a mounted file system, or gone.
  [[nodiscard]] bool isMountRoot(std::string_view name) const noexcept;
  /// Whether the folder at `path_`, of that name, is a package.
  [[nodiscard]] bool isPackage(std::string_view name, bool mayHoldContents) const;
  [[nodiscard]] bool isStopped() const noexcept {
    return common_.isStopped.load(std::memory_order_relaxed);
  }

  const Common common_;
  Volumes volumes_;

  /// The folder being searched. This and the following are members to save allocations.
  std::string path_;
  std::string entryPath_;
  FolderListing listing_;
};

} // namespace searchsystem
