#pragma once

#include "platform/foundation/NSLock.h"
#include "platform/metadata/IndexDatabase.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Collects what a query has learnt about folders and puts it into the index, a good deal at a
/// time, so that others find the index locked for moments only. An index that cannot be written is
/// left alone; one that is broken is begun anew.
///
/// Ownership: owns what it collects, and its connection. Threads: any.
class IndexWriter {
public:
  explicit IndexWriter(std::optional<IndexPlace> place) noexcept;

  /// Whether it is of any use to collect records.
  [[nodiscard]] bool isWanted() const noexcept;

  /// Takes a record in; writes what has been collected if that is much.
  void add(IndexRecord record) noexcept;

  /// Takes note of a folder that is gone, with all that was below it.
  void addGone(std::string_view key) noexcept;

  /// Takes note that reading has shown the index to be broken.
  void setBroken() noexcept;

  /// Writes what is left. To be called once, at the end.
  void finish() noexcept;

private:
  struct Batch {
    std::vector<IndexRecord> records;
    std::vector<std::string> gone;
    std::size_t bytes = 0;
  };

  void write(Batch batch, bool isLast) noexcept;
  [[nodiscard]] IndexFault tryToWrite(const Batch &batch);

  const std::optional<IndexPlace> place_;

  mutable NSLock lock_;
  Batch collected_ PF_GUARDED_BY(lock_);
  bool isBroken_ PF_GUARDED_BY(lock_) = false;
  bool isWriting_ PF_GUARDED_BY(lock_) = false;
  bool isDisabled_ PF_GUARDED_BY(lock_) = false;

  /// Belongs to whoever has set `isWriting_`.
  std::unique_ptr<IndexDatabase> database_;
};
