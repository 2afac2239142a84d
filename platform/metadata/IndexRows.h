#pragma once

#include "platform/metadata/IndexFault.h"
#include "platform/metadata/RecordGroup.h"
#include "platform/metadata/SqliteStatement.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;

namespace searchsystem {

/// Changes the rows of the index's table. A row holds a group of records, from its path up to the
/// path of the next row.
///
/// Ownership: borrows the connection. Threads: that of the connection. Members throw
/// `std::bad_alloc`.
class IndexRows {
public:
  explicit IndexRows(sqlite3 *connection) noexcept : connection_(connection) {}

  /// The size that rows are made to, about fifty folders.
  static constexpr std::size_t bytesInRow = std::size_t{32} << 10;

  /// As `IndexDatabase::store`, within a transaction.
  [[nodiscard]] IndexFault change(std::span<const IndexRecord> records,
                                  std::span<const std::string> gone);

private:
  struct Row {
    std::string path;
    /// Never empty in the table.
    std::string records;
    /// The path of the next row, if there is one.
    std::optional<std::string> next;
  };

  [[nodiscard]] IndexFault prepare() noexcept;
  /// Finds the row that `key` belongs to; only the next one if it comes before all rows.
  [[nodiscard]] IndexFault find(std::string_view key, Row &row);
  [[nodiscard]] IndexFault replace(const Row &row, std::span<const RecordGroup::Record> records);
  [[nodiscard]] IndexFault put(std::span<const RecordGroup::Record> records);

  sqlite3 *const connection_;
  SqliteStatement at_, after_, remove_, put_;
};

} // namespace searchsystem
