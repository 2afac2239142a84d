#pragma once

#include "platform/metadata/IndexFault.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/RecordGroup.h"
#include "platform/metadata/SqliteStatement.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct sqlite3;

/// A connection to the index: records in the order of their keys, several to a row of a table in
/// SQLite, so that several processes can share it and none can leave it half written. Whatever the
/// table says, a record proves by itself that it is whole and still holds; so the file need not be
/// secured against a failure of the system, nor against any other loss.
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

  /// The next record, valid until the next call; none at the end, and when reading fails, as
  /// `fault` tells then. Throws `std::bad_alloc`.
  [[nodiscard]] std::optional<RecordGroup::Record> next();

  /// What made reading fail. Nothing can be read any more then.
  [[nodiscard]] IndexFault fault() const noexcept { return fault_; }

  /// Puts records in, in place of older ones, after it has taken out those of folders that are gone
  /// with all that was below them. Both in the order of their keys, and no folder twice or below
  /// another that is gone. All of it or nothing.
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
  };
  using Connection = std::unique_ptr<sqlite3, Close>;

  explicit IndexDatabase(Connection connection) noexcept;

  static std::unique_ptr<IndexDatabase> open(const IndexPlace &place, bool isToWrite,
                                             IndexFault &fault);
  [[nodiscard]] IndexFault execute(const char *commands) noexcept;
  [[nodiscard]] IndexFault checkSchema() noexcept;
  [[nodiscard]] IndexFault makeTable() noexcept;
  [[nodiscard]] IndexFault prepareToRead() noexcept;
  [[nodiscard]] bool goToNextRow() noexcept;
  void fail(IndexFault fault) noexcept;

  // The statement is closed before its connection.
  Connection connection_;
  SqliteStatement tree_;
  /// What is read lies between these.
  std::string treeKey_, treeEnd_;
  /// What is left of the row that is being read, which belongs to the statement.
  std::string_view rest_;
  /// The key of the last record, if there has been one.
  std::optional<std::string> lastKey_;
  IndexFault fault_ = IndexFault::None;
};
