#include "platform/metadata/IndexDatabase.h"

#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/FolderKey.h"
#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/IndexRows.h"

#include <sqlite3.h>
#include <sys/stat.h>

namespace searchsystem {

namespace {

/// A row holds the records from its path up to the path of the next row.
constexpr const char *table =
    "CREATE TABLE folders(path BLOB NOT NULL PRIMARY KEY, folders INTEGER NOT NULL, "
    "entries INTEGER NOT NULL, records BLOB NOT NULL) WITHOUT ROWID";

/// How long a writer waits for another. A reader never waits.
constexpr int writersPatienceInMilliseconds = 250;

/// A larger index is replaced: most of its folders must be gone.
constexpr std::int64_t mostBytes = std::int64_t{1} << 30;

} // namespace

void IndexDatabase::Close::operator()(sqlite3 *connection) const noexcept {
  sqlite3_close_v2(connection);
}

std::unique_ptr<IndexDatabase> IndexDatabase::open(const IndexPlace &place, bool isToWrite,
                                                   IndexFault &fault) {
  sqlite3 *opened = nullptr;
  const int flags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (isToWrite ? SQLITE_OPEN_CREATE : 0);
  const int code = sqlite3_open_v2(place.file().c_str(), &opened, flags, nullptr);
  Connection connection(opened);
  fault = faultOfSqlite(code);
  if (fault != IndexFault::None)
    return nullptr;
  std::unique_ptr<IndexDatabase> database(new IndexDatabase(std::move(connection)));
  sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_limit(opened, SQLITE_LIMIT_LENGTH,
                static_cast<int>(FolderRecord::mostBytes + IndexRows::bytesInRow) + 16384);
  sqlite3_busy_timeout(opened, isToWrite ? writersPatienceInMilliseconds : 0);
  return database;
}

std::unique_ptr<IndexDatabase> IndexDatabase::openToRead(const IndexPlace &place,
                                                         IndexFault &fault) {
  using Finding = IndexPlace::Finding;
  const Finding finding = place.look();
  if (finding != Finding::Usable) {
    fault = finding == Finding::Nothing     ? IndexFault::Missing
            : finding == Finding::Untrusted ? IndexFault::Broken
                                            : IndexFault::Unavailable;
    return nullptr;
  }
  std::unique_ptr<IndexDatabase> database = open(place, false, fault);
  if (database)
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
  if (database)
    fault = database->execute("PRAGMA synchronous = OFF; PRAGMA wal_autocheckpoint = 64");
  if (fault == IndexFault::None)
    fault = database->checkSchema();
  if (fault == IndexFault::Missing) {
    // SQLite gives the files beside it the same permissions.
    uninterrupted(&SystemCalls::setMode, place.file().c_str(), S_IRUSR | S_IWUSR);
    fault = database->makeTable();
  }
  return fault == IndexFault::None ? std::move(database) : nullptr;
}

IndexFault IndexDatabase::execute(const char *commands) noexcept {
  return faultOfSqlite(sqlite3_exec(connection_.get(), commands, nullptr, nullptr, nullptr));
}

IndexFault IndexDatabase::checkSchema() noexcept {
  // Reading anything but our table could run code hidden in the file.
  SqliteStatement statement;
  IndexFault fault = statement.prepare(connection_.get(), "SELECT sql FROM sqlite_schema");
  if (fault != IndexFault::None)
    return fault;
  if (!statement.step(fault))
    return fault == IndexFault::None ? IndexFault::Missing : fault;
  const bool isOurs = statement.bytes(0) == table;
  const bool isAlone = !statement.step(fault);
  if (fault != IndexFault::None)
    return fault;
  return isOurs && isAlone ? IndexFault::None : IndexFault::Broken;
}

IndexFault IndexDatabase::makeTable() noexcept {
  // Another process may be doing the same.
  IndexFault fault = execute("PRAGMA page_size = 8192; PRAGMA auto_vacuum = INCREMENTAL; "
                             "PRAGMA journal_mode = WAL; BEGIN IMMEDIATE");
  if (fault != IndexFault::None)
    return fault;
  fault = checkSchema();
  if (fault == IndexFault::Missing)
    fault = execute(table);
  if (fault == IndexFault::None)
    return execute("COMMIT");
  static_cast<void>(execute("ROLLBACK"));
  return fault;
}

IndexFault IndexDatabase::prepareToRead() noexcept {
  // One snapshot for all reads saves taking one for each.
  IndexFault fault = execute("PRAGMA synchronous = OFF; BEGIN");
  if (fault == IndexFault::None)
    fault = checkSchema();
  if (fault == IndexFault::None)
    fault =
        tree_.prepare(connection_.get(), "SELECT path, records FROM folders WHERE path >= ifnull("
                                         "(SELECT max(path) FROM folders WHERE path <= ?1), ?1) "
                                         "AND path < ?2 ORDER BY path");
  return fault;
}

void IndexDatabase::fail(IndexFault fault) noexcept {
  fault_ = fault;
  rest_ = {};
  tree_.close();
}

void IndexDatabase::selectTree(std::string_view key) {
  treeKey_ = key;
  treeEnd_ = FolderKey::endOfTree(key);
  rest_ = {};
  lastKey_.reset();
  if (!tree_.isOpen())
    return;
  tree_.reset();
  tree_.bind(1, treeKey_);
  tree_.bind(2, treeEnd_);
}

std::optional<RecordGroup::Record> IndexDatabase::next() {
  while (tree_.isOpen()) {
    if (rest_.empty()) {
      IndexFault fault = IndexFault::None;
      if (!tree_.step(fault)) {
        if (fault != IndexFault::None)
          fail(fault);
        return std::nullopt;
      }
      rest_ = tree_.bytes(1);
    }
    const std::optional<RecordGroup::Record> record = RecordGroup::take(rest_);
    // In a damaged file the pages may form a cycle, or be in any order.
    if (!record || (lastKey_ && record->key <= *lastKey_)) {
      fail(IndexFault::Broken);
      return std::nullopt;
    }
    lastKey_ = record->key;
    if (record->key >= treeEnd_) {
      rest_ = {};
      tree_.reset();
      return std::nullopt;
    }
    if (record->key >= treeKey_)
      return record;
  }
  return std::nullopt;
}

IndexFault IndexDatabase::store(std::span<const IndexRecord> records,
                                std::span<const std::string> gone) noexcept {
  IndexFault fault = execute("BEGIN IMMEDIATE");
  if (fault != IndexFault::None)
    return fault;
  try {
    fault = IndexRows(connection_.get()).change(records, gone);
  } catch (...) {
    fault = IndexFault::Unavailable;
  }
  if (fault == IndexFault::None)
    fault = execute("COMMIT");
  if (fault != IndexFault::None)
    static_cast<void>(execute("ROLLBACK"));
  else if (!gone.empty())
    static_cast<void>(execute("PRAGMA incremental_vacuum"));
  return fault;
}

std::optional<IndexDatabase::Totals> IndexDatabase::totals() noexcept {
  SqliteStatement statement;
  IndexFault fault = statement.prepare(
      connection_.get(), "SELECT ifnull(sum(folders), 0), ifnull(sum(entries), 0) FROM folders");
  if (fault != IndexFault::None || !statement.step(fault))
    return std::nullopt;
  return Totals{statement.number(0), statement.number(1)};
}

} // namespace searchsystem
