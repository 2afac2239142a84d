#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// One folder's record to be written to the index.
struct IndexRecord {
  /// `FolderKey`.
  std::string key;
  std::uint32_t entries = 0;
  /// `FolderRecord`; empty for a folder that must be listed each time.
  std::string bytes;
};

/// Neighbouring records in one piece, as the index stores them: most are too small for a row of
/// their own.
namespace RecordGroup {

/// A view of a record in a group.
struct Record {
  std::string_view key;
  std::uint32_t entries = 0;
  std::string_view bytes;
};

[[nodiscard]] std::size_t sizeOf(const Record &record) noexcept;

/// Throws `std::bad_alloc`.
void append(std::string &group, const Record &record);

/// Takes the first record from the rest of a group; none if that does not hold a whole one.
[[nodiscard]] std::optional<Record> take(std::string_view &rest) noexcept;

/// The records of a group, without those of folders that are `gone` and of everything below them,
/// and with `records`, which replace older ones. Both are in the order of their keys, and no folder
/// that is gone is below another. None if the group is damaged. The result views all three
/// arguments. Throws `std::bad_alloc`.
[[nodiscard]] std::optional<std::vector<Record>> merge(std::string_view group,
                                                       std::span<const IndexRecord> records,
                                                       std::span<const std::string> gone);

} // namespace RecordGroup

} // namespace searchsystem
