#include "platform/metadata/SqliteStatement.h"

#include <cstddef>
#include <sqlite3.h>

namespace searchsystem {

IndexFault faultOfSqlite(int code) noexcept {
  switch (code & 0xFF) {
  case SQLITE_OK:
  case SQLITE_ROW:
  case SQLITE_DONE:
    return IndexFault::None;
  case SQLITE_ERROR:
  case SQLITE_CORRUPT:
  case SQLITE_NOTADB:
  case SQLITE_FORMAT:
  case SQLITE_TOOBIG:
  case SQLITE_MISMATCH:
  case SQLITE_CONSTRAINT:
  case SQLITE_SCHEMA:
    return IndexFault::Broken;
  default:
    return IndexFault::Unavailable;
  }
}

void SqliteStatement::Close::operator()(sqlite3_stmt *statement) const noexcept {
  sqlite3_finalize(statement);
}

IndexFault SqliteStatement::prepare(sqlite3 *connection, const char *command) noexcept {
  sqlite3_stmt *prepared = nullptr;
  const int code =
      sqlite3_prepare_v3(connection, command, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
  statement_.reset(prepared);
  return faultOfSqlite(code);
}

void SqliteStatement::bind(int parameter, std::string_view bytes) noexcept {
  // An empty value must not become NULL.
  sqlite3_bind_blob64(statement_.get(), parameter, bytes.empty() ? "" : bytes.data(), bytes.size(),
                      SQLITE_STATIC);
}

void SqliteStatement::bind(int parameter, std::int64_t number) noexcept {
  sqlite3_bind_int64(statement_.get(), parameter, number);
}

bool SqliteStatement::step(IndexFault &fault) noexcept {
  const int code = sqlite3_step(statement_.get());
  fault = faultOfSqlite(code);
  if (code == SQLITE_ROW)
    return true;
  reset();
  return false;
}

std::string_view SqliteStatement::bytes(int column) noexcept {
  const void *const bytes = sqlite3_column_blob(statement_.get(), column);
  const int size = sqlite3_column_bytes(statement_.get(), column);
  if (bytes == nullptr || size <= 0)
    return {};
  return {static_cast<const char *>(bytes), static_cast<std::size_t>(size)};
}

std::int64_t SqliteStatement::number(int column) noexcept {
  return sqlite3_column_int64(statement_.get(), column);
}

void SqliteStatement::reset() noexcept { sqlite3_reset(statement_.get()); }

IndexFault SqliteStatement::run() noexcept {
  IndexFault fault = IndexFault::None;
  static_cast<void>(step(fault));
  return fault;
}

} // namespace searchsystem
