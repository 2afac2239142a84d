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
#include <utility>

struct sqlite3;

namespace searchsystem {

/// A connection to the index: records in the order of their keys, several to a row of an SQLite
/// table, so that several processes can share it and none leaves it half written. A record
/// shows whether it is whole and still valid; so the file need not survive a crash of the system or
/// any other loss.
///
/// Ownership: owns the connection. Threads: one at a time.
class IndexDatabase {
public:
  /// Opens the existing index without changing it; null, and the reason in `fault`, if it cannot.
  /// Throws `std::bad_alloc`.
  static std::unique_ptr<IndexDatabase> openToRead(const IndexPlace &place, IndexFault &fault);

  /// Opens the index for writing; creates it if it is missing or cannot be trusted. Throws
  /// `std::bad_alloc`.
  static std::unique_ptr<IndexDatabase> openToWrite(const IndexPlace &place, IndexFault &fault);

  /// Begins to read the records of a folder and of everything below it, in the order of their keys.
  void selectTree(std::string_view key);

  /// The next record, valid until the next call; none at the end, and when reading fails, which
  /// `fault` shows. Throws `std::bad_alloc`.
  [[nodiscard]] std::optional<RecordGroup::Record> next();

  /// Why reading failed, if it did. Nothing can be read after that.
  [[nodiscard]] IndexFault fault() const noexcept { return fault_; }

  /// Removes the records of folders that are `gone` and of everything below them, then adds
  /// `records` in place of older ones. Both are in the order of their keys; no folder occurs twice,
  /// or below another that is gone. All of it or nothing.
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

  explicit IndexDatabase(Connection connection) noexcept : connection_(std::move(connection)) {}

  static std::unique_ptr<IndexDatabase> open(const IndexPlace &place, bool isToWrite,
                                             IndexFault &fault);
  [[nodiscard]] IndexFault execute(const char *commands) noexcept;
  [[nodiscard]] IndexFault checkSchema() noexcept;
  [[nodiscard]] IndexFault makeTable() noexcept;
  [[nodiscard]] IndexFault prepareToRead() noexcept;
  void fail(IndexFault fault) noexcept;

  // The statement is closed before its connection.
  Connection connection_;
  SqliteStatement tree_;
  /// The keys to read: from the first up to, but not including, the second.
  std::string treeKey_, treeEnd_;
  /// The rest of the row being read; the statement owns it.
  std::string_view rest_;
  /// The key of the last record, if any.
  std::optional<std::string> lastKey_;
  IndexFault fault_ = IndexFault::None;
};

} // namespace searchsystem
