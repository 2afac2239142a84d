#include "platform/metadata/IndexRows.h"

#include "platform/metadata/FolderKey.h"

#include <algorithm>
#include <utility>

namespace searchsystem {

IndexFault IndexRows::prepare() noexcept {
  const std::pair<SqliteStatement &, const char *> statements[] = {
      {at_, "SELECT path, records FROM folders WHERE path <= ?1 ORDER BY path DESC LIMIT 1"},
      {after_, "SELECT path FROM folders WHERE path > ?1 ORDER BY path LIMIT 1"},
      {remove_, "DELETE FROM folders WHERE path = ?1"},
      {put_, "INSERT OR REPLACE INTO folders VALUES(?1, ?2, ?3, ?4)"},
  };
  for (const auto &[statement, command] : statements)
    if (const IndexFault fault = statement.prepare(connection_, command); fault != IndexFault::None)
      return fault;
  return IndexFault::None;
}

IndexFault IndexRows::find(std::string_view key, Row &row) {
  IndexFault fault = IndexFault::None;
  at_.bind(1, key);
  if (at_.step(fault)) {
    row = {std::string(at_.bytes(0)), std::string(at_.bytes(1)), {}};
    at_.reset();
    if (row.records.empty())
      return IndexFault::Broken;
  }
  if (fault != IndexFault::None)
    return fault;
  after_.bind(1, row.records.empty() ? key : row.path);
  if (after_.step(fault)) {
    row.next = after_.bytes(0);
    after_.reset();
  }
  return fault;
}

IndexFault IndexRows::put(std::span<const RecordGroup::Record> records) {
  std::string group;
  std::int64_t entries = 0;
  for (const RecordGroup::Record &record : records) {
    RecordGroup::append(group, record);
    entries += record.entries;
  }
  put_.bind(1, records.front().key);
  put_.bind(2, static_cast<std::int64_t>(records.size()));
  put_.bind(3, entries);
  put_.bind(4, group);
  return put_.run();
}

IndexFault IndexRows::replace(const Row &row, std::span<const RecordGroup::Record> records) {
  IndexFault fault = IndexFault::None;
  if (!row.records.empty() && (records.empty() || records.front().key != row.path)) {
    remove_.bind(1, row.path);
    fault = remove_.run();
  }
  std::size_t bytes = 0;
  for (const RecordGroup::Record &record : records)
    bytes += RecordGroup::sizeOf(record);
  // Rows of about the same size, so that none is left almost empty.
  const std::size_t bytesEach = bytes / (bytes / bytesInRow + 1) + 1;
  while (fault == IndexFault::None && !records.empty()) {
    std::size_t count = 0;
    for (std::size_t size = 0; count < records.size() && size < bytesEach; ++count)
      size += RecordGroup::sizeOf(records[count]);
    fault = put(records.first(count));
    records = records.subspan(count);
  }
  return fault;
}

IndexFault IndexRows::change(std::span<const IndexRecord> records,
                             std::span<const std::string> gone) {
  IndexFault fault = prepare();
  // A folder that is gone can have several rows, with those below it.
  std::string key;
  while (fault == IndexFault::None && !(records.empty() && gone.empty())) {
    const bool isRecordNext =
        gone.empty() || (!records.empty() && records.front().key < gone.front());
    key = std::max(key, isRecordNext ? records.front().key : gone.front());
    Row row;
    fault = find(key, row);
    if (fault != IndexFault::None)
      return fault;
    const auto isOfRow = [&](std::string_view other) { return !row.next || other < *row.next; };
    // In a damaged file the rows may form a cycle.
    if (!isOfRow(key))
      return IndexFault::Broken;
    const auto recordsOfRow = static_cast<std::size_t>(
        std::ranges::partition_point(records, isOfRow, &IndexRecord::key) - records.begin());
    auto goneInRow =
        static_cast<std::size_t>(std::ranges::partition_point(gone, isOfRow) - gone.begin());
    const auto merged =
        RecordGroup::merge(row.records, records.first(recordsOfRow), gone.first(goneInRow));
    if (!merged || (!merged->empty() && !isOfRow(merged->back().key)))
      return IndexFault::Broken;
    fault = replace(row, *merged);
    records = records.subspan(recordsOfRow);
    if (goneInRow > 0 && row.next && FolderKey::isBelow(*row.next, gone[goneInRow - 1])) {
      key = *row.next;
      --goneInRow;
    }
    gone = gone.subspan(goneInRow);
  }
  return fault;
}

} // namespace searchsystem
