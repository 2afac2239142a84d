#pragma once

#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/IndexFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Records in memory, on their way to the index.
///
/// Ownership: owns the bytes. Threads: one at a time.
class RecordBatch {
public:
  /// If it throws `std::bad_alloc`, nothing has been added.
  void add(std::string_view path, const FolderRecord::Facts &facts, const FolderNames &names);

  [[nodiscard]] bool isEmpty() const noexcept { return entries_.empty(); }
  [[nodiscard]] std::size_t count() const noexcept { return entries_.size(); }
  /// About what they take, in memory or on the disk.
  [[nodiscard]] std::size_t size() const noexcept {
    return bytes_.size() + entries_.size() * sizeof(Entry);
  }

  /// Puts them in the order of their paths, and leaves one listing of each folder.
  void sort();

  /// Writes them, once sorted; false if that fails. Throws `std::bad_alloc`.
  [[nodiscard]] bool writeTo(IndexSegmentWriter &segment) const;

private:
  struct Entry {
    std::size_t begin, end;
    std::uint32_t pathSize;
    std::uint32_t listing;
    std::uint16_t part;
    bool isGone;
  };
  [[nodiscard]] std::string_view pathOf(const Entry &entry) const noexcept {
    return std::string_view(bytes_).substr(entry.begin + FolderRecord::placeOfPath, entry.pathSize);
  }

  std::string bytes_;
  std::vector<Entry> entries_;
};

} // namespace searchsystem
