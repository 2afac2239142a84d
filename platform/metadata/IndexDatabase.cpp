#include "platform/metadata/IndexDatabase.h"

#include <cstring>
#include <sqlite3.h>
#include <sys/stat.h>

namespace {

constexpr const char *table =
    "CREATE TABLE folder(volume INTEGER NOT NULL, parent INTEGER NOT NULL, inode INTEGER NOT NULL, "
    "entries INTEGER NOT NULL, record BLOB NOT NULL, PRIMARY KEY(volume, parent, inode)) "
    "WITHOUT ROWID";

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

void bind(sqlite3_stmt *statement, const FolderKey &key) noexcept {
  sqlite3_bind_int64(statement, 1, key.volume);
  sqlite3_bind_int64(statement, 2, key.parent);
  sqlite3_bind_int64(statement, 3, key.inode);
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
  sqlite3_limit(opened, SQLITE_LIMIT_LENGTH, static_cast<int>(FolderRecord::mostBytes) + 4096);
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
  if (!place.makeFolder())
    return nullptr;
  const IndexPlace::Finding finding = place.look();
  if (finding == IndexPlace::Finding::Impossible)
    return nullptr;
  const bool isTooLarge = finding == IndexPlace::Finding::Usable && place.sizeOnDisk() > mostBytes;
  if ((finding == IndexPlace::Finding::Untrusted || isTooLarge) && !place.removeFiles())
    return nullptr;
  std::unique_ptr<IndexDatabase> database = open(place, true, fault);
  if (!database)
    return nullptr;
  fault = database->execute("PRAGMA synchronous = OFF");
  if (fault == IndexFault::None)
    fault = database->checkSchema();
  if (fault == IndexFault::Missing) {
    // What SQLite puts beside the file has the file's permissions.
    chmod(place.file().c_str(), S_IRUSR | S_IWUSR);
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
  IndexFault fault = execute("PRAGMA synchronous = OFF; PRAGMA cache_size = -8000; BEGIN");
  if (fault == IndexFault::None)
    fault = checkSchema();
  if (fault == IndexFault::None)
    fault = prepare(children_, "SELECT inode, record FROM folder WHERE volume = ?1 AND parent = ?2 "
                               "ORDER BY inode");
  if (fault == IndexFault::None)
    fault = prepare(one_, "SELECT record FROM folder WHERE volume = ?1 AND parent = ?2 AND "
                          "inode = ?3");
  return fault;
}

void IndexDatabase::fail(IndexFault fault) noexcept {
  fault_ = fault;
  children_.reset();
  one_.reset();
}

void IndexDatabase::selectChildren(std::int64_t volume, std::int64_t parent) noexcept {
  hasInode_ = false;
  if (!children_)
    return;
  sqlite3_reset(children_.get());
  sqlite3_bind_int64(children_.get(), 1, volume);
  sqlite3_bind_int64(children_.get(), 2, parent);
}

std::optional<IndexDatabase::Row> IndexDatabase::nextChild() noexcept {
  if (!children_)
    return std::nullopt;
  const int code = sqlite3_step(children_.get());
  if (code != SQLITE_ROW) {
    sqlite3_reset(children_.get());
    if (code != SQLITE_DONE)
      fail(faultOf(code));
    return std::nullopt;
  }
  const Row row{sqlite3_column_int64(children_.get(), 0), blobOf(children_.get(), 1)};
  // A damaged file can have its pages in a ring.
  if (hasInode_ && row.inode <= lastInode_) {
    fail(IndexFault::Broken);
    return std::nullopt;
  }
  hasInode_ = true;
  lastInode_ = row.inode;
  return row;
}

std::optional<std::string_view> IndexDatabase::find(const FolderKey &key) noexcept {
  if (!one_)
    return std::nullopt;
  sqlite3_reset(one_.get());
  bind(one_.get(), key);
  const int code = sqlite3_step(one_.get());
  if (code == SQLITE_ROW)
    return blobOf(one_.get(), 0);
  if (code != SQLITE_DONE)
    fail(faultOf(code));
  return std::nullopt;
}

IndexFault IndexDatabase::put(std::span<const IndexRecord> records) noexcept {
  Statement statement;
  IndexFault fault = prepare(statement, "INSERT OR REPLACE INTO folder VALUES(?1, ?2, ?3, ?4, ?5)");
  for (auto record = records.begin(); fault == IndexFault::None && record != records.end();
       ++record) {
    bind(statement.get(), record->key);
    sqlite3_bind_int64(statement.get(), 4, record->entries);
    sqlite3_bind_blob64(statement.get(), 5, record->bytes.data(), record->bytes.size(),
                        SQLITE_STATIC);
    fault = run(statement.get());
  }
  return fault;
}

IndexFault IndexDatabase::take(const char *command, std::span<const FolderKey> keys) noexcept {
  if (keys.empty())
    return IndexFault::None;
  Statement statement;
  IndexFault fault = prepare(statement, command);
  for (auto key = keys.begin(); fault == IndexFault::None && key != keys.end(); ++key) {
    bind(statement.get(), *key);
    fault = run(statement.get());
  }
  return fault;
}

IndexFault IndexDatabase::store(std::span<const IndexRecord> records,
                                std::span<const FolderKey> moved,
                                std::span<const FolderKey> gone) noexcept {
  constexpr const char *takeOne =
      "DELETE FROM folder WHERE volume = ?1 AND parent = ?2 AND inode = ?3";
  constexpr const char *takeAllBelow =
      "WITH RECURSIVE lost(inode) AS (SELECT ?3 UNION SELECT folder.inode FROM folder, lost "
      "WHERE folder.volume = ?1 AND folder.parent = lost.inode) "
      "DELETE FROM folder WHERE volume = ?1 AND parent IN lost";
  IndexFault fault = execute("BEGIN IMMEDIATE");
  if (fault != IndexFault::None)
    return fault;
  fault = take(takeOne, moved);
  if (fault == IndexFault::None)
    fault = take(takeOne, gone);
  if (fault == IndexFault::None)
    fault = take(takeAllBelow, gone);
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
