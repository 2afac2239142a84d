#pragma once

#include "platform/metadata/IndexFault.h"

#include <cstdint>
#include <memory>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

/// What an answer of SQLite's means for the index.
[[nodiscard]] IndexFault faultOfSqlite(int code) noexcept;

/// A prepared statement.
///
/// Ownership: owns the statement; to be destroyed before its connection. Threads: that of its
/// connection.
class SqliteStatement {
public:
  [[nodiscard]] IndexFault prepare(sqlite3 *connection, const char *command) noexcept;
  void close() noexcept { statement_.reset(); }
  [[nodiscard]] bool isOpen() const noexcept { return statement_ != nullptr; }

  /// Give a parameter, counted from 1, its value. Bytes have to stay where they are until the next
  /// reset.
  void bind(int parameter, std::string_view bytes) noexcept;
  void bind(int parameter, std::int64_t number) noexcept;

  /// Goes on to the next row. False behind the last one, and where that fails, as `fault` tells;
  /// the statement is reset then.
  [[nodiscard]] bool step(IndexFault &fault) noexcept;

  /// What the row has in a column, counted from 0. Bytes are valid until the next step or reset.
  [[nodiscard]] std::string_view bytes(int column) noexcept;
  [[nodiscard]] std::int64_t number(int column) noexcept;

  /// Makes it ready for its next use, with the same values.
  void reset() noexcept;

  /// Runs a statement that answers nothing.
  [[nodiscard]] IndexFault run() noexcept;

private:
  struct Close {
    void operator()(sqlite3_stmt *statement) const noexcept;
  };
  std::unique_ptr<sqlite3_stmt, Close> statement_;
};
