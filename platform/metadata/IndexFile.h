#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/IndexPlace.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Records in the order of their paths, as they lie in one piece of the index file: a header, the
/// records in groups that can be read one by one, and a table of the groups. Offsets of groups are
/// places in the file.
struct IndexSegment {
  std::uint64_t begin = 0, end = 0;
  std::uint64_t records = 0;
  /// Where each group begins, and the last one ends.
  std::vector<std::uint64_t> groups{};
};

/// The file of the index, open for reading: segments, one behind the other. What a later one says
/// of a folder replaces what an earlier one does. A reader keeps what it has opened, whatever
/// others do with the index.
///
/// Ownership: owns the descriptor. Threads: any; immutable.
class IndexFile {
public:
  /// The index at `place`; null if there is none that can be used. `isBroken` shows whether that is
  /// because it is damaged, or of another form. Throws `std::bad_alloc`.
  static std::shared_ptr<const IndexFile> open(const IndexPlace &place, bool &isBroken);

  /// The same of any file. Throws `std::bad_alloc`.
  static std::shared_ptr<const IndexFile> read(FileDescriptor file);

  [[nodiscard]] int descriptor() const noexcept { return file_.number(); }
  [[nodiscard]] const std::vector<IndexSegment> &segments() const noexcept { return segments_; }

  /// Where the last whole segment ends. What follows was interrupted while it was written.
  [[nodiscard]] std::uint64_t end() const noexcept {
    return segments_.empty() ? 0 : segments_.back().end;
  }
  [[nodiscard]] std::uint64_t size() const noexcept { return size_; }

private:
  IndexFile() noexcept = default;

  FileDescriptor file_;
  std::uint64_t size_ = 0;
  std::vector<IndexSegment> segments_;
};

/// Writes records as one segment. A segment that is not finished is none: its header comes last.
///
/// Ownership: borrows the file. Threads: one at a time.
class IndexSegmentWriter {
public:
  IndexSegmentWriter(int file, std::uint64_t offset) noexcept : file_(file), begin_(offset) {}

  /// Adds a record, whose path does not come before that of the last one. False if it cannot be
  /// written. Throws `std::bad_alloc`.
  [[nodiscard]] bool add(const FolderRecord &record, std::string_view path);

  /// Ends the segment, and returns where; none if it cannot be written. Throws `std::bad_alloc`.
  [[nodiscard]] std::optional<std::uint64_t> finish();

private:
  [[nodiscard]] bool flush() noexcept;

  const int file_;
  const std::uint64_t begin_;
  std::uint64_t written_ = 0;
  std::uint64_t records_ = 0;
  std::size_t recordsInGroup_ = 0;
  std::size_t groupBegin_ = 0;
  std::vector<std::uint64_t> groups_;
  std::string buffer_, lastPath_;
};

} // namespace searchsystem
