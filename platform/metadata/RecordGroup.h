#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// One folder's record on its way into the index.
struct IndexRecord {
  /// `FolderKey`.
  std::string key;
  std::uint32_t entries = 0;
  /// `FolderRecord`, or nothing for a folder that has to be listed each time.
  std::string bytes;
};

/// Neighbouring records in one piece, as the index keeps them: by themselves most are too small to
/// be worth a row of its table.
namespace RecordGroup {

/// A record within a group, whose bytes it views.
struct Record {
  std::string_view key;
  std::uint32_t entries = 0;
  std::string_view bytes;
};

[[nodiscard]] std::size_t sizeOf(const Record &record) noexcept;

/// Throws `std::bad_alloc`.
void append(std::string &group, const Record &record);

/// Takes the first record off what is left of a group; none where that holds no whole one.
[[nodiscard]] std::optional<Record> take(std::string_view &rest) noexcept;

/// The records of a group after those of folders that are gone, with all below them, have been
/// taken out and others been put in. These are in the order of their keys, and no folder that is
/// gone is below another one. Nothing where the group is damaged. The result views all three.
/// Throws `std::bad_alloc`.
[[nodiscard]] std::optional<std::vector<Record>> merge(std::string_view group,
                                                       std::span<const IndexRecord> records,
                                                       std::span<const std::string> gone);

} // namespace RecordGroup
