#pragma once

#include "platform/metadata/IndexFault.h"

#include <cstdint>
#include <memory>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace searchsystem {

/// The fault that a result code of SQLite means.
[[nodiscard]] IndexFault faultOfSqlite(int code) noexcept;

/// A prepared statement.
///
/// Ownership: owns the statement, which must be destroyed before its connection. Threads: that of
/// the connection.
class SqliteStatement {
public:
  [[nodiscard]] IndexFault prepare(sqlite3 *connection, const char *command) noexcept;
  void close() noexcept { statement_.reset(); }
  [[nodiscard]] bool isOpen() const noexcept { return statement_ != nullptr; }

  /// Sets a parameter, counted from 1. Bytes must stay in place until the next reset.
  void bind(int parameter, std::string_view bytes) noexcept;
  void bind(int parameter, std::int64_t number) noexcept;

  /// Steps to the next row. False after the last one, and on a failure, which `fault` shows; the
  /// statement is then reset.
  [[nodiscard]] bool step(IndexFault &fault) noexcept;

  /// The row's value in a column, counted from 0. Bytes are valid until the next step or reset.
  [[nodiscard]] std::string_view bytes(int column) noexcept;
  [[nodiscard]] std::int64_t number(int column) noexcept;

  /// Makes the statement ready to run again with the same parameters.
  void reset() noexcept;

  /// Runs a statement that returns no rows.
  [[nodiscard]] IndexFault run() noexcept;

private:
  struct Close {
    void operator()(sqlite3_stmt *statement) const noexcept;
  };
  std::unique_ptr<sqlite3_stmt, Close> statement_;
};

} // namespace searchsystem
