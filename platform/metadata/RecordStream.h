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
///
/// Ownership: shared; owns the connection. Threads: any, as far as not said otherwise.
class RecordStream {
public:
  using Results = std::vector<Ref<const NSString>>;

  struct Row {
    std::size_t keyBegin = 0, keySize = 0, recordSize = 0;
    /// What the search has found out: whether the folder is gone, whether it may be searched, the
    /// names of its sub-folders in the order of their bytes, each ended by a NUL, and the files
    /// that it found.
    bool isGone = false;
    bool isSearched = false;
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

  /// The next chunk. One thread at a time, until it has been told of the last one. Throws
  /// `std::bad_alloc`.
  [[nodiscard]] std::unique_ptr<Chunk> read();

  /// Whether another chunk may be read now; if not, `merge` will tell when.
  [[nodiscard]] bool mayRead() noexcept;

  /// Takes a chunk back that has been searched. Puts what is now known to be found into `results`,
  /// and the folders that have no record into `tasks`. True when it has become possible to read
  /// the next chunk. Throws `std::bad_alloc`, and then something is missing from both.
  [[nodiscard]] bool merge(std::unique_ptr<Chunk> chunk, FolderQueue::Tasks &tasks,
                           Results &results);

private:
  /// A folder that may be searched, on the way to the record that is looked at.
  struct Folder {
    std::size_t keySize;
    std::string names;
    std::size_t next = 0;
  };

  RecordStream(const std::string &scope, std::unique_ptr<IndexDatabase> index, IndexWriter &writer);

  void mergeRow(const Chunk &chunk, Row &row, FolderQueue::Tasks &tasks, Results &results)
      PF_REQUIRES(lock_);
  [[nodiscard]] bool isExpected(std::string_view name, FolderQueue::Tasks &tasks)
      PF_REQUIRES(lock_);
  void leaveFolder(FolderQueue::Tasks &tasks) PF_REQUIRES(lock_);
  void addTask(std::string_view name, FolderQueue::Tasks &tasks) PF_REQUIRES(lock_);

  // Constant.
  const std::string scopeKey_;
  const std::string scopePrefix_;
  int scopeFolder_ = -1;
  IndexWriter &writer_;

  // Of whoever reads.
  std::unique_ptr<IndexDatabase> index_;
  std::optional<IndexDatabase::Row> nextRow_;
  std::size_t nextNumber_ = 0;

  NSLock lock_;
  std::size_t readCount_ PF_GUARDED_BY(lock_) = 0;
  std::size_t mergedCount_ PF_GUARDED_BY(lock_) = 0;
  bool isHeldUp_ PF_GUARDED_BY(lock_) = false;
  std::map<std::size_t, std::unique_ptr<Chunk>> searched_ PF_GUARDED_BY(lock_);
  /// From the scope down; and the key of the last one.
  std::vector<Folder> way_ PF_GUARDED_BY(lock_);
  std::string wayKey_ PF_GUARDED_BY(lock_);
};
