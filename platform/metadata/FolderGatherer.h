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

/// Looks at folders for a query: finds the files that meet its predicate, and the sub-folders that
/// are to be looked at next. The names in a folder come from its record in the index, as long as
/// the folder bears the moment of change that the record was made at; else from the disk, and then
/// a new record is made. Whether a folder may be searched at all is asked of the disk each time.
///
/// Ownership: borrows all that it is made from. Threads: one at a time.
class FolderGatherer {
public:
  using Results = RecordStream::Results;

  /// What all threads of a query have in common.
  struct Common {
    const NSPredicate &predicate;
    /// None where no index is used.
    const std::optional<IndexPlace> &place;
    IndexWriter &writer;
    FolderQueue &queue;
    const std::atomic<bool> &isStopped;
  };

  explicit FolderGatherer(const Common &common) noexcept : common_(common) {}

  /// Does one task. `tasks` takes up those that follow from it, `results` the paths of the files
  /// that are found. Where memory is short it begins once more, and what cannot be found then is
  /// missing from both.
  void process(const FolderTask &task, FolderQueue::Tasks &tasks, Results &results) noexcept;

private:
  void tryToProcess(const FolderTask &task, FolderQueue::Tasks &tasks, Results &results);
  void processScope(const std::string &scope, FolderQueue::Tasks &tasks, Results &results);
  void processRecords(const std::shared_ptr<RecordStream> &stream, FolderQueue::Tasks &tasks,
                      Results &results) noexcept;

  /// Searches the folder that a record is about.
  void tryToSearchRow(const RecordStream &stream, const RecordStream::Chunk &chunk,
                      RecordStream::Row &row) noexcept;
  void searchRow(const RecordStream &stream, const RecordStream::Chunk &chunk,
                 RecordStream::Row &row);

  /// Searches the folder at `path_` with its names read from the disk. What it answers is valid
  /// until the next call; none when the folder cannot be searched. `isRecorded` tells whether there
  /// is a record of it, though one that does not hold.
  std::optional<FolderNames> list(bool isRecorded, Results &results);
  void keep(const FileStatus &status, std::int64_t volume, bool isLasting, bool isRecorded,
            const FolderNames &names);
  void listWithSubFolders(FolderQueue::Tasks &tasks, Results &results);

  /// Finds files among the names of the folder at `path_`.
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

  /// The folder that is being looked at; kept, like what follows, to save allocations.
  std::string path_;
  std::string entryPath_;
  FolderListing listing_;
};
