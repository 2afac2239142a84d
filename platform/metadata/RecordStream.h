#pragma once

#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"
#include "platform/metadata/FolderQueue.h"
#include "platform/metadata/IndexDatabase.h"
#include "platform/metadata/IndexWriter.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The records of a search scope, read once from its beginning to its end: a folder right before
/// all that is below it. They come in chunks, which several threads search at the same time. A
/// thread finds out about each folder by itself whether it is there and what it holds; whether the
/// way to it still leads through folders that may be searched becomes clear when the chunks are put
/// in order again. So do the folders that have no record, and the records that have no folder.
/// Where memory runs short the stream is given up: what has not been put in order yet is listed
/// from the disk.
///
/// Ownership: shared; owns the connection. Threads: any, as far as not said otherwise.
class RecordStream {
public:
  using Results = std::vector<Ref<const NSString>>;

  struct Row {
    std::size_t keyBegin = 0, keySize = 0, recordSize = 0;
    /// What the search has found out: whether the folder is gone, whether it may be searched, or
    /// memory was too short to tell, the names of its sub-folders in the order of their bytes, each
    /// ended by a NUL, and the files that it found.
    bool isGone = false;
    bool isSearched = false;
    bool hasFailed = false;
    std::string folders;
    Results results;
  };

  struct Chunk {
    [[nodiscard]] std::string_view key(const Row &row) const noexcept {
      return std::string_view(bytes).substr(row.keyBegin, row.keySize);
    }
    [[nodiscard]] std::string_view record(const Row &row) const noexcept {
      return std::string_view(bytes).substr(row.keyBegin + row.keySize, row.recordSize);
    }

    std::size_t number = 0;
    bool isLast = false;
    std::string bytes;
    std::vector<Row> rows;
  };

  /// The records of the folder at `scope`, which is a path without links; null when there is none
  /// of the folder itself. Throws `std::bad_alloc`.
  static std::shared_ptr<RecordStream> open(const std::string &scope, const IndexPlace &place,
                                            IndexWriter &writer);

  ~RecordStream();
  RecordStream(const RecordStream &) = delete;
  RecordStream &operator=(const RecordStream &) = delete;

  /// The scope's key, its path without a slash at the end, and the folder itself, for calls that
  /// take a path relative to it.
  [[nodiscard]] const std::string &scopeKey() const noexcept { return scopeKey_; }
  [[nodiscard]] const std::string &scopePrefix() const noexcept { return scopePrefix_; }
  [[nodiscard]] int scopeFolder() const noexcept { return scopeFolder_; }

  /// The next chunk; null when the stream has been given up. One thread at a time, until it has
  /// been told of the last one. Throws `std::bad_alloc`, and then the stream must be given up.
  [[nodiscard]] std::unique_ptr<Chunk> read();

  /// Whether another chunk may be read now; if not, `merge` will tell when.
  [[nodiscard]] bool mayRead() noexcept;

  /// Takes a chunk back that has been searched. Puts what is now known to be found into `results`,
  /// and the folders that have no record into `tasks`. True when it has become possible to read
  /// the next chunk. Without memory for that it gives the stream up, before another chunk can be
  /// merged behind one that was merged in part.
  [[nodiscard]] bool merge(std::unique_ptr<Chunk> chunk, FolderQueue::Tasks &tasks,
                           Results &results) noexcept;

  /// Has no more chunks read or merged. Puts the folders into `tasks` that with all below them make
  /// up what has not been merged. Where not even these find memory the rest is left to the threads
  /// that bring their chunks back, and is lost after the last of them.
  void giveUp(FolderQueue::Tasks &tasks) noexcept;

private:
  /// A folder that may be searched, on the way to the record that is looked at.
  struct Folder {
    std::size_t keySize;
    std::string names;
    /// Where the first name stands that nothing has been done about yet.
    std::size_t next = 0;

    [[nodiscard]] bool isDone() const noexcept { return next >= names.size(); }
    [[nodiscard]] std::string_view name() const noexcept { return names.c_str() + next; }
    void goOn() noexcept { next += name().size() + 1; }
  };

  RecordStream(const std::string &scope, std::unique_ptr<IndexDatabase> index, IndexWriter &writer);

  // When one of these throws, what it has not done yet is still ahead of `way_`, and the stream
  // must be given up before the lock is.
  [[nodiscard]] bool mergeInOrder(std::unique_ptr<Chunk> chunk, FolderQueue::Tasks &tasks,
                                  Results &results) PF_REQUIRES(lock_);
  void mergeRow(const Chunk &chunk, Row &row, FolderQueue::Tasks &tasks, Results &results)
      PF_REQUIRES(lock_);
  void mergeFolder(std::string_view key, Row &row, Results &results) PF_REQUIRES(lock_);
  /// Goes on to the sub-folder of that name in the folder at the end of the way, if there is one.
  [[nodiscard]] bool isExpected(std::string_view name, FolderQueue::Tasks &tasks)
      PF_REQUIRES(lock_);
  void leaveFolder(FolderQueue::Tasks &tasks) PF_REQUIRES(lock_);
  void addRest(FolderQueue::Tasks &tasks) PF_REQUIRES(lock_);
  void stopMerging(FolderQueue::Tasks &tasks) noexcept PF_REQUIRES(lock_);
  void addTask(std::string_view name, FolderQueue::Tasks &tasks) PF_REQUIRES(lock_);

  // Constant.
  const std::string scopeKey_;
  const std::string scopePrefix_;
  int scopeFolder_ = -1;
  IndexWriter &writer_;

  // Of whoever reads.
  std::unique_ptr<IndexDatabase> index_;
  std::optional<RecordGroup::Record> nextRecord_;
  std::size_t nextNumber_ = 0;

  NSLock lock_;
  std::size_t readCount_ PF_GUARDED_BY(lock_) = 0;
  std::size_t mergedCount_ PF_GUARDED_BY(lock_) = 0;
  bool isHeldUp_ PF_GUARDED_BY(lock_) = false;
  bool isGivenUp_ PF_GUARDED_BY(lock_) = false;
  /// The scope itself has been merged.
  bool isBegun_ PF_GUARDED_BY(lock_) = false;
  std::map<std::size_t, std::unique_ptr<Chunk>> searched_ PF_GUARDED_BY(lock_);
  /// From the scope down; and the key of the last one.
  std::vector<Folder> way_ PF_GUARDED_BY(lock_);
  std::string wayKey_ PF_GUARDED_BY(lock_);
};
