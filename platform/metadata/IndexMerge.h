#pragma once

#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/IndexFile.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// The records of a folder and of everything below it, in the order of their paths, from several
/// segments: of each folder those of the newest listing, and none of a folder that is gone. They
/// are read in pieces; whether they are whole is not asked.
///
/// Ownership: shares the files and the pieces. Threads: one at a time.
class IndexMerge {
public:
  /// `folder` is one of `FolderPath`, empty for all. The later a file and a segment, the newer.
  /// Throws `std::bad_alloc`.
  IndexMerge(const std::vector<std::shared_ptr<const IndexFile>> &files, std::string_view folder);
  ~IndexMerge();
  IndexMerge(const IndexMerge &) = delete;
  IndexMerge &operator=(const IndexMerge &) = delete;

  /// Steps to the next record, the first at first; false at the end. Throws `std::bad_alloc`.
  [[nodiscard]] bool next();

  /// The record, whose names are in the piece, and its path, valid until the next step.
  [[nodiscard]] const FolderRecord &record() const noexcept;
  [[nodiscard]] const std::string &path() const noexcept;
  [[nodiscard]] const std::shared_ptr<const char[]> &piece() const noexcept;

  /// Whether something could not be read, or was not in order, and has been left out.
  [[nodiscard]] bool isBroken() const noexcept { return isBroken_; }

private:
  class Run;

  /// Puts the last run into its place, or takes it out if it has no record.
  void keep(bool hasRecord) noexcept;

  const std::string folder_;
  /// The one whose record comes first is the last.
  std::vector<std::unique_ptr<Run>> runs_;
  std::size_t age_ = 0;
  bool isBegun_ = false;
  bool isBroken_ = false;
  /// The folder that the records belong to, and the listing that counts.
  std::string listedPath_;
  std::optional<std::uint32_t> listing_;
  unsigned nextPart_ = 0;
};

} // namespace searchsystem
