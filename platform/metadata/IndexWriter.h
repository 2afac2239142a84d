#pragma once

#include "platform/foundation/NSLock.h"
#include "platform/metadata/IndexDatabase.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Collects what a query learns about folders and writes it to the index in large batches, so that
/// the index is rarely locked. It leaves an index alone that cannot be written, and replaces one
/// that is broken.
///
/// Ownership: owns what it collects, and its connection. Threads: any.
class IndexWriter {
public:
  explicit IndexWriter(std::optional<IndexPlace> place) noexcept;

  /// Whether records are worth making: there is an index, and room for more.
  [[nodiscard]] bool isWanted() const noexcept;

  /// Adds a record; writes a batch if one is complete.
  void add(IndexRecord record) noexcept;

  /// Notes that a folder is gone, with everything below it.
  void addGone(std::string_view key) noexcept;

  /// Notes that the index has turned out to be broken.
  void setBroken() noexcept;

  /// Writes the rest. Called once, at the end.
  void finish() noexcept { write(true); }

private:
  struct Batch {
    std::vector<IndexRecord> records;
    std::vector<std::string> gone;
    std::size_t bytes = 0;
  };

  void write(bool isLast) noexcept;
  [[nodiscard]] IndexFault tryToWrite(const Batch &batch);

  const std::optional<IndexPlace> place_;

  mutable NSLock lock_;
  Batch collected_ PF_GUARDED_BY(lock_);
  bool isBroken_ PF_GUARDED_BY(lock_) = false;
  bool isWriting_ PF_GUARDED_BY(lock_) = false;
  bool isDisabled_ PF_GUARDED_BY(lock_) = false;

  /// Used by the thread that has set `isWriting_`.
  std::unique_ptr<IndexDatabase> database_;
};

} // namespace searchsystem
