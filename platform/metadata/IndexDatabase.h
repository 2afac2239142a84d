#pragma once

#include "platform/metadata/IndexPlace.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

/// Why the index is of no help.
enum class IndexFault {
  None,
  /// There is none yet.
  Missing,
  /// It cannot be used at present: it is locked, or the disk is full or read-only.
  Unavailable,
  /// It is damaged, or is something else.
  Broken,
};

/// One folder's record on its way into the index.
struct IndexRecord {
  /// `FolderKey`.
  std::string key;
  std::int64_t entries = 0;
  /// `FolderRecord`, or nothing for a folder that has to be listed each time.
  std::string bytes;
};

/// A connection to the index: a table of records in the order of their keys, in SQLite, so that
/// several processes can share it and none can leave it half written. Whatever the table says, a
/// record proves by itself that it is whole and still holds; so the file need not be secured
/// against a failure of the system, nor against any other loss.
///
/// Ownership: owns the connection. Threads: one at a time.
class IndexDatabase {
public:
  /// Opens the index that is there, without changing it; null, and why, when that cannot be done.
  /// Throws `std::bad_alloc`.
  static std::unique_ptr<IndexDatabase> openToRead(const IndexPlace &place, IndexFault &fault);

  /// Opens the index to be written; makes it where it is missing, and makes it anew where it is not
  /// to be trusted. Throws `std::bad_alloc`.
  static std::unique_ptr<IndexDatabase> openToWrite(const IndexPlace &place, IndexFault &fault);

  ~IndexDatabase();
  IndexDatabase(const IndexDatabase &) = delete;
  IndexDatabase &operator=(const IndexDatabase &) = delete;

  /// Begins to read the records of a folder and of all that is below it, in the order of their
  /// keys.
  void selectTree(std::string_view key);

  struct Row {
    /// Valid until the next call.
    std::string_view key, record;
  };

  /// The next record; none at the end, and when reading fails, as `fault` tells then.
  [[nodiscard]] std::optional<Row> next();

  /// What made reading fail. Nothing can be read any more then.
  [[nodiscard]] IndexFault fault() const noexcept { return fault_; }

  /// Puts records in, in place of older ones, after it has taken out those of folders that are gone
  /// with all that was below them. All of it or nothing.
  [[nodiscard]] IndexFault store(std::span<const IndexRecord> records,
                                 std::span<const std::string> gone) noexcept;

  struct Totals {
    std::int64_t folders = 0;
    std::int64_t entries = 0;
  };
  [[nodiscard]] std::optional<Totals> totals() noexcept;

private:
  struct Close {
    void operator()(sqlite3 *connection) const noexcept;
    void operator()(sqlite3_stmt *statement) const noexcept;
  };
  using Connection = std::unique_ptr<sqlite3, Close>;
  using Statement = std::unique_ptr<sqlite3_stmt, Close>;

  explicit IndexDatabase(Connection connection) noexcept;

  static std::unique_ptr<IndexDatabase> open(const IndexPlace &place, bool isToWrite,
                                             IndexFault &fault);
  [[nodiscard]] IndexFault execute(const char *commands) noexcept;
  [[nodiscard]] IndexFault prepare(Statement &statement, const char *command) noexcept;
  [[nodiscard]] IndexFault checkSchema() noexcept;
  [[nodiscard]] IndexFault makeTable() noexcept;
  [[nodiscard]] IndexFault prepareToRead() noexcept;
  [[nodiscard]] IndexFault put(std::span<const IndexRecord> records) noexcept;
  [[nodiscard]] IndexFault take(std::span<const std::string> trees);
  void fail(IndexFault fault) noexcept;

  // The statement is closed before its connection.
  Connection connection_;
  Statement tree_;
  std::string treeEnd_;
  std::string lastKey_;
  bool isFirst_ = true;
  IndexFault fault_ = IndexFault::None;
};
