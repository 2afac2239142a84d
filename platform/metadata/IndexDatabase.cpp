#include "platform/metadata/IndexDatabase.h"

#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/FolderKey.h"
#include "platform/metadata/FolderRecord.h"

#include <cstring>
#include <sqlite3.h>
#include <sys/stat.h>

namespace {

constexpr const char *table = "CREATE TABLE folder(path BLOB NOT NULL PRIMARY KEY, "
                              "entries INTEGER NOT NULL, record BLOB NOT NULL) WITHOUT ROWID";

/// How long a writer waits for another. A reader waits for nobody.
constexpr int writersPatienceInMilliseconds = 250;

/// An index that has grown beyond this is begun anew: most of it must be of folders that are gone.
constexpr std::int64_t mostBytes = std::int64_t{1} << 30;

IndexFault faultOf(int code) noexcept {
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

/// Binds bytes that stay where they are while the statement runs. An empty key is no NULL.
void bind(sqlite3_stmt *statement, int parameter, std::string_view bytes) noexcept {
  sqlite3_bind_blob64(statement, parameter, bytes.empty() ? "" : bytes.data(), bytes.size(),
                      SQLITE_STATIC);
}

std::string_view blobOf(sqlite3_stmt *statement, int column) noexcept {
  const void *const bytes = sqlite3_column_blob(statement, column);
  const int size = sqlite3_column_bytes(statement, column);
  if (bytes == nullptr || size <= 0)
    return {};
  return {static_cast<const char *>(bytes), static_cast<std::size_t>(size)};
}

/// Runs a statement that answers nothing, and makes it ready for its next use.
IndexFault run(sqlite3_stmt *statement) noexcept {
  sqlite3_step(statement);
  return faultOf(sqlite3_reset(statement));
}

} // namespace

void IndexDatabase::Close::operator()(sqlite3 *connection) const noexcept {
  sqlite3_close_v2(connection);
}

void IndexDatabase::Close::operator()(sqlite3_stmt *statement) const noexcept {
  sqlite3_finalize(statement);
}

IndexDatabase::IndexDatabase(Connection connection) noexcept : connection_(std::move(connection)) {}

IndexDatabase::~IndexDatabase() = default;

std::unique_ptr<IndexDatabase> IndexDatabase::open(const IndexPlace &place, bool isToWrite,
                                                   IndexFault &fault) {
  sqlite3 *opened = nullptr;
  const int flags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (isToWrite ? SQLITE_OPEN_CREATE : 0);
  const int code = sqlite3_open_v2(place.file().c_str(), &opened, flags, nullptr);
  Connection connection(opened);
  fault = faultOf(code);
  if (fault != IndexFault::None)
    return nullptr;
  std::unique_ptr<IndexDatabase> database(new IndexDatabase(std::move(connection)));
  sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_limit(opened, SQLITE_LIMIT_LENGTH, static_cast<int>(FolderRecord::mostBytes) + 16384);
  sqlite3_busy_timeout(opened, isToWrite ? writersPatienceInMilliseconds : 0);
  return database;
}

std::unique_ptr<IndexDatabase> IndexDatabase::openToRead(const IndexPlace &place,
                                                         IndexFault &fault) {
  switch (place.look()) {
  case IndexPlace::Finding::Nothing:
    fault = IndexFault::Missing;
    return nullptr;
  case IndexPlace::Finding::Untrusted:
    fault = IndexFault::Broken;
    return nullptr;
  case IndexPlace::Finding::Impossible:
    fault = IndexFault::Unavailable;
    return nullptr;
  case IndexPlace::Finding::Usable:
    break;
  }
  std::unique_ptr<IndexDatabase> database = open(place, false, fault);
  if (!database)
    return nullptr;
  fault = database->prepareToRead();
  return fault == IndexFault::None ? std::move(database) : nullptr;
}

std::unique_ptr<IndexDatabase> IndexDatabase::openToWrite(const IndexPlace &place,
                                                          IndexFault &fault) {
  fault = IndexFault::Unavailable;
  const IndexPlace::Finding finding = place.look();
  if (finding == IndexPlace::Finding::Impossible || !place.makeFolder())
    return nullptr;
  const bool isTooLarge = finding == IndexPlace::Finding::Usable && place.sizeOnDisk() > mostBytes;
  if ((finding == IndexPlace::Finding::Untrusted || isTooLarge) && !place.removeFiles())
    return nullptr;
  std::unique_ptr<IndexDatabase> database = open(place, true, fault);
  if (!database)
    return nullptr;
  fault = database->execute("PRAGMA synchronous = OFF; PRAGMA wal_autocheckpoint = 64");
  if (fault == IndexFault::None)
    fault = database->checkSchema();
  if (fault == IndexFault::Missing) {
    // What SQLite puts beside the file has the file's permissions.
    uninterrupted(&SystemCalls::setMode, place.file().c_str(), S_IRUSR | S_IWUSR);
    fault = database->makeTable();
  }
  return fault == IndexFault::None ? std::move(database) : nullptr;
}

IndexFault IndexDatabase::execute(const char *commands) noexcept {
  return faultOf(sqlite3_exec(connection_.get(), commands, nullptr, nullptr, nullptr));
}

IndexFault IndexDatabase::prepare(Statement &statement, const char *command) noexcept {
  sqlite3_stmt *prepared = nullptr;
  const int code = sqlite3_prepare_v3(connection_.get(), command, -1, SQLITE_PREPARE_PERSISTENT,
                                      &prepared, nullptr);
  statement.reset(prepared);
  return faultOf(code);
}

IndexFault IndexDatabase::checkSchema() noexcept {
  // Anything but our table alone may do what it likes when it is read.
  Statement statement;
  const IndexFault fault = prepare(statement, "SELECT sql FROM sqlite_schema");
  if (fault != IndexFault::None)
    return fault;
  int code = sqlite3_step(statement.get());
  if (code == SQLITE_DONE)
    return IndexFault::Missing;
  if (code != SQLITE_ROW)
    return faultOf(code);
  const bool isOurs = blobOf(statement.get(), 0) == table;
  code = sqlite3_step(statement.get());
  if (code == SQLITE_ROW || (code == SQLITE_DONE && !isOurs))
    return IndexFault::Broken;
  return faultOf(code);
}

IndexFault IndexDatabase::makeTable() noexcept {
  // Another process may be at it too.
  for (const char *const command :
       {"PRAGMA page_size = 8192; PRAGMA auto_vacuum = INCREMENTAL; PRAGMA journal_mode = WAL",
        "BEGIN IMMEDIATE"})
    if (const IndexFault fault = execute(command); fault != IndexFault::None)
      return fault;
  IndexFault fault = checkSchema();
  if (fault == IndexFault::Missing)
    fault = execute(table);
  if (fault == IndexFault::None)
    return execute("COMMIT");
  static_cast<void>(execute("ROLLBACK"));
  return fault;
}

IndexFault IndexDatabase::prepareToRead() noexcept {
  // One view for all that is read saves asking for it each time.
  IndexFault fault = execute("PRAGMA synchronous = OFF; BEGIN");
  if (fault == IndexFault::None)
    fault = checkSchema();
  if (fault == IndexFault::None)
    fault = prepare(tree_, "SELECT path, record FROM folder WHERE path >= ?1 AND path < ?2 "
                           "ORDER BY path");
  return fault;
}

void IndexDatabase::fail(IndexFault fault) noexcept {
  fault_ = fault;
  tree_.reset();
}

void IndexDatabase::selectTree(std::string_view key) {
  treeKey_ = key;
  treeEnd_ = FolderKey::endOfTree(key);
  lastKey_ = key;
  isFirst_ = true;
  if (!tree_)
    return;
  sqlite3_reset(tree_.get());
  bind(tree_.get(), 1, treeKey_);
  bind(tree_.get(), 2, treeEnd_);
}

std::optional<IndexDatabase::Row> IndexDatabase::next() {
  if (!tree_)
    return std::nullopt;
  const int code = sqlite3_step(tree_.get());
  if (code != SQLITE_ROW) {
    sqlite3_reset(tree_.get());
    if (code != SQLITE_DONE)
      fail(faultOf(code));
    return std::nullopt;
  }
  const Row row{blobOf(tree_.get(), 0), blobOf(tree_.get(), 1)};
  // A damaged file can have its pages in a ring, or anywhere. The first key may be that of the
  // folder itself.
  const bool isInOrder = row.key > lastKey_ || (isFirst_ && row.key == lastKey_);
  if (!isInOrder || row.key >= treeEnd_) {
    fail(IndexFault::Broken);
    return std::nullopt;
  }
  isFirst_ = false;
  lastKey_ = row.key;
  return row;
}

IndexFault IndexDatabase::put(std::span<const IndexRecord> records) noexcept {
  Statement statement;
  IndexFault fault = prepare(statement, "INSERT OR REPLACE INTO folder VALUES(?1, ?2, ?3)");
  for (auto record = records.begin(); fault == IndexFault::None && record != records.end();
       ++record) {
    bind(statement.get(), 1, record->key);
    sqlite3_bind_int64(statement.get(), 2, record->entries);
    bind(statement.get(), 3, record->bytes);
    fault = run(statement.get());
  }
  return fault;
}

IndexFault IndexDatabase::take(std::span<const std::string> trees) {
  Statement statement;
  IndexFault fault = prepare(statement, "DELETE FROM folder WHERE path >= ?1 AND path < ?2");
  for (auto key = trees.begin(); fault == IndexFault::None && key != trees.end(); ++key) {
    const std::string end = FolderKey::endOfTree(*key);
    bind(statement.get(), 1, *key);
    bind(statement.get(), 2, end);
    fault = run(statement.get());
  }
  return fault;
}

IndexFault IndexDatabase::store(std::span<const IndexRecord> records,
                                std::span<const std::string> gone) noexcept {
  IndexFault fault = execute("BEGIN IMMEDIATE");
  if (fault != IndexFault::None)
    return fault;
  try {
    fault = take(gone);
  } catch (...) {
    fault = IndexFault::Unavailable;
  }
  if (fault == IndexFault::None)
    fault = put(records);
  if (fault == IndexFault::None)
    fault = execute("COMMIT");
  if (fault != IndexFault::None)
    static_cast<void>(execute("ROLLBACK"));
  else if (!gone.empty())
    static_cast<void>(execute("PRAGMA incremental_vacuum"));
  return fault;
}

std::optional<IndexDatabase::Totals> IndexDatabase::totals() noexcept {
  Statement statement;
  if (prepare(statement, "SELECT count(*), ifnull(sum(entries), 0) FROM folder") !=
          IndexFault::None ||
      sqlite3_step(statement.get()) != SQLITE_ROW)
    return std::nullopt;
  return Totals{sqlite3_column_int64(statement.get(), 0), sqlite3_column_int64(statement.get(), 1)};
}
