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
/// search next. It takes the names in a folder from the folder's record in the index if that counts
/// (see `isTrue`); otherwise it reads them from the disk and makes a new record. It asks the disk
/// each time whether a folder may be searched at all, and whether a file found in a record is
/// there.
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

  explicit FolderGatherer(const Common &common) noexcept;

  /// Does one task. Adds the tasks that follow from it to `tasks`, and the paths of the files found
  /// to `results`. If memory is short it starts over once; if that fails too, both lack the
  /// rest.
  void process(const FolderTask &task, FolderQueue::Tasks &tasks, Results &results) noexcept;

private:
  /// A folder being searched: its path, and how the system finds what is in it.
  struct Place {
    std::string_view path;
    int folder;
    /// The way from `folder` to the folder; empty if it is that.
    std::string_view below;
    /// The names have just been read from the disk.
    bool isListed;
  };

  void tryToProcess(const FolderTask &task, FolderQueue::Tasks &tasks, Results &results);
  void processScope(const std::string &scope, FolderQueue::Tasks &tasks, Results &results);
  void processRecords(const std::shared_ptr<RecordStream> &stream, FolderQueue::Tasks &tasks,
                      Results &results) noexcept;

  /// Searches the folder of a record.
  void searchRow(const RecordStream &stream, RecordStream::Chunk &chunk, RecordStream::Row &row);

  /// Whether a folder of that status shows each change of its names.
  [[nodiscard]] bool canProve(const FileStatus &status) const noexcept;
  /// Whether the names of a whole record are those in the folder, from its status and file system.
  [[nodiscard]] bool isTrue(const FolderRecord::Facts &facts, const FileStatus &status,
                            std::optional<std::int64_t> volume) const noexcept;
  /// Makes a record of old age young, so that it is not dropped.
  void renew(std::string_view path, const FolderRecord &record) noexcept;

  /// Searches the folder at `path_` with its names read from the disk. Returns the names of its
  /// sub-folders, valid until the next call; none if the folder cannot be searched. `isRecorded`:
  /// the index has an outdated record of it.
  std::optional<std::string_view> list(bool isRecorded, Results &results);
  void listWithSubFolders(FolderQueue::Tasks &tasks, Results &results);

  /// Finds files among names.
  void search(const Place &place, const FolderNames &names, Results &results);

  /// Whether the folder at `path_`, of that name, is the root of a mounted file system, or gone.
  [[nodiscard]] bool isMountRoot(std::string_view name) const noexcept;
  [[nodiscard]] bool isStopped() const noexcept {
    return common_.isStopped.load(std::memory_order_relaxed);
  }

  const Common common_;
  const TextPattern *const textInName_;
  const std::uint16_t today_;
  Volumes volumes_;

  /// The folder being listed. This and the following are members to save allocations.
  std::string path_;
  std::string entryPath_;
  FolderListing listing_;
};

} // namespace searchsystem
