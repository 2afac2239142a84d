#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/metadata/FolderQueue.h"
#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/IndexMerge.h"
#include "platform/metadata/IndexWriter.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// The records of a search scope, read once from beginning to end: each folder directly before
/// everything below it. They come in chunks, which several threads search at the same time. For
/// each folder a thread checks whether it exists and what it holds. Merging the chunks in order
/// then shows whether all folders above it may be searched, which folders have no record, and which
/// records have no folder. If memory runs short the stream is given up: what has not been merged is
/// listed from the disk.
///
/// Ownership: shared; owns what it opens. Threads: any, unless a member says otherwise.
class RecordStream {
public:
  using Results = std::vector<Ref<const NSString>>;

  struct Row {
    [[nodiscard]] std::string_view folders() const noexcept {
      return listedFolders ? *listedFolders : record.names().folders;
    }

    std::size_t pathBegin, pathSize;
    FolderRecord record;

    /// What the search has come to. Of a folder that is left open, nothing is known.
    enum class Outcome { Open, MayNotBeSearched, Gone, Searched } outcome = Outcome::Open;
    /// The files found, among those of the chunk.
    std::size_t resultsBegin = 0, resultsEnd = 0;
    /// The names of the sub-folders (as in `FolderNames`) of a folder that had to be listed.
    std::unique_ptr<std::string> listedFolders{};
  };

  struct Chunk {
    /// A NUL follows it.
    [[nodiscard]] std::string_view path(const Row &row) const noexcept {
      return std::string_view(paths).substr(row.pathBegin, row.pathSize);
    }

    std::size_t number = 0;
    bool isLast = false;
    std::string paths;
    std::vector<Row> rows;
    Results results;
    /// They hold the names of the records.
    std::vector<std::shared_ptr<const char[]>> pieces;
  };

  /// The records of the folder at `scope`, a path without links; null if the folder itself has
  /// none. Throws `std::bad_alloc`.
  static std::shared_ptr<RecordStream> open(const std::string &scope, const IndexPlace &place,
                                            IndexWriter &writer);

  /// The scope's path without a slash at the end, and a descriptor of the folder, for calls that
  /// take a path relative to it.
  [[nodiscard]] const std::string &scopePath() const noexcept { return scopePath_; }
  [[nodiscard]] int scopeFolder() const noexcept { return scopeFolder_.number(); }

  /// The next chunk; null when the stream has been given up. One thread at a time, and not after
  /// the last chunk. If it throws `std::bad_alloc` the stream must be given up.
  [[nodiscard]] std::unique_ptr<Chunk> read();

  /// Whether another chunk may be read now; if not, `merge` reports when.
  [[nodiscard]] bool mayRead() noexcept;

  /// Takes back a chunk that has been searched. Adds the files that are now certain to `results`,
  /// and the folders without a record to `tasks`. True when the next chunk, which had to wait, may
  /// be read. If memory is short it gives up the stream, before another chunk can be merged after
  /// one that was merged in part.
  [[nodiscard]] bool merge(std::unique_ptr<Chunk> chunk, FolderQueue::Tasks &tasks,
                           Results &results) noexcept;

  /// Ends reading and merging. Adds folders to `tasks` that with everything below them cover what
  /// has not been merged. If memory is too short even for that, the threads that return their
  /// chunks try again; after the last of them the rest is lost.
  void giveUp(FolderQueue::Tasks &tasks) noexcept;

private:
  /// A folder that may be searched, above the record to be merged.
  struct Folder {
    std::size_t pathSize;
    std::string names;
    /// Where the first name begins that has not been dealt with.
    std::size_t next = 0;

    [[nodiscard]] bool isDone() const noexcept { return next >= names.size(); }
    [[nodiscard]] std::string_view name() const noexcept { return names.c_str() + next; }
    void skipName() noexcept { next += name().size() + 1; }
  };

  /// The parts of a listing that have been searched, up to the last one.
  struct Parts {
    std::string path;
    std::uint32_t listing = 0;
    std::size_t count = 0;
    Results results;
  };

  RecordStream(std::string scopePath, std::unique_ptr<IndexMerge> index,
               IndexWriter &writer) noexcept;

  // When one of these throws, what it has not done is still ahead of `way_`, and the stream must be
  // given up before the lock is released.
  [[nodiscard]] bool mergeInOrder(std::unique_ptr<Chunk> chunk, FolderQueue::Tasks &tasks,
                                  Results &results) PF_REQUIRES(lock_);
  void mergeRow(Chunk &chunk, const Row &row, FolderQueue::Tasks &tasks, Results &results)
      PF_REQUIRES(lock_);
  /// Whether a folder has been dealt with: not before the last part of its listing.
  [[nodiscard]] bool mergeFolder(Chunk &chunk, const Row &row, Results &results) PF_REQUIRES(lock_);
  [[nodiscard]] bool mergePart(Chunk &chunk, const Row &row) PF_REQUIRES(lock_);
  /// Skips to the sub-folder of that name in the last folder of the way; false if there is none.
  [[nodiscard]] bool isExpected(std::string_view name, FolderQueue::Tasks &tasks)
      PF_REQUIRES(lock_);
  void leaveFolder(FolderQueue::Tasks &tasks) PF_REQUIRES(lock_);
  void addRest(FolderQueue::Tasks &tasks) PF_REQUIRES(lock_);
  void stopMerging(FolderQueue::Tasks &tasks) noexcept PF_REQUIRES(lock_);
  void addTask(std::string_view name, FolderQueue::Tasks &tasks) PF_REQUIRES(lock_);

  // Constant.
  const std::string scopePath_;
  FileDescriptor scopeFolder_;
  IndexWriter &writer_;

  // The reading thread's.
  std::unique_ptr<IndexMerge> index_;
  bool hasRecord_ = true;

  NSLock lock_;
  std::size_t readCount_ PF_GUARDED_BY(lock_) = 0;
  std::size_t mergedCount_ PF_GUARDED_BY(lock_) = 0;
  bool isHeldUp_ PF_GUARDED_BY(lock_) = false;
  bool isGivenUp_ PF_GUARDED_BY(lock_) = false;
  /// The scope itself has been merged.
  bool isBegun_ PF_GUARDED_BY(lock_) = false;
  std::map<std::size_t, std::unique_ptr<Chunk>> searched_ PF_GUARDED_BY(lock_);
  /// The folders from the scope down, and the path of the last one.
  std::vector<Folder> way_ PF_GUARDED_BY(lock_);
  std::string wayPath_ PF_GUARDED_BY(lock_);
  Parts parts_ PF_GUARDED_BY(lock_);
};

} // namespace searchsystem
