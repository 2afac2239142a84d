#pragma once

#include "platform/foundation/NSLock.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/IndexUpdate.h"
#include "platform/metadata/RecordBatch.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace searchsystem {

/// Collects what a query learns about folders and writes it to the index when the query ends. It
/// leaves an index alone that cannot be written, and repairs one that is broken.
///
/// Ownership: owns what it collects. Threads: any.
class IndexWriter {
public:
  explicit IndexWriter(std::optional<IndexPlace> place) noexcept;

  /// Whether records are worth making: there can be an index, and there is room for more.
  [[nodiscard]] bool isWanted() const noexcept;

  /// Adds a record; writes a batch to the disk if one is complete.
  void add(std::string_view path, const FolderRecord::Facts &facts,
           const FolderNames &names) noexcept;

  /// Notes that a folder is gone.
  void addGone(std::string_view path) noexcept;

  /// Notes that the index has turned out to be broken.
  void setBroken() noexcept;

  /// Writes the rest. Called once, at the end.
  void finish() noexcept { write(true); }

private:
  void write(bool isLast) noexcept;
  [[nodiscard]] bool tryToWrite(RecordBatch &batch, bool isLast, bool isBroken);

  const std::optional<IndexPlace> place_;

  mutable NSLock lock_;
  RecordBatch collected_ PF_GUARDED_BY(lock_);
  bool isBroken_ PF_GUARDED_BY(lock_) = false;
  bool isWriting_ PF_GUARDED_BY(lock_) = false;
  bool isDisabled_ PF_GUARDED_BY(lock_) = false;

  /// Used by the thread that has set `isWriting_`.
  std::unique_ptr<IndexUpdate> update_;
};

} // namespace searchsystem
