#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/metadata/IndexFile.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/RecordBatch.h"

#include <cstdint>
#include <memory>

namespace searchsystem {

/// One writer's turn at the index, which all others leave alone meanwhile. A few records are
/// appended to the file. If they are many, or what they replace is much, the file is made anew, and
/// takes the place of the old one in one step. A disk that becomes full is given back what was
/// written.
///
/// Ownership: owns what it opens. Threads: one at a time.
class IndexUpdate {
public:
  /// Null if another has its turn, or there can be no index. Throws `std::bad_alloc`.
  static std::unique_ptr<IndexUpdate> begin(const IndexPlace &place);

  ~IndexUpdate();
  IndexUpdate(const IndexUpdate &) = delete;
  IndexUpdate &operator=(const IndexUpdate &) = delete;

  /// Puts sorted records aside until the end of the turn; false if that fails. Throws
  /// `std::bad_alloc`.
  [[nodiscard]] bool putAside(const RecordBatch &batch);

  /// Writes what was put aside and `batch`, sorted, to the index. If that `isBroken`, only what is
  /// whole stays. False if the index is left as it was. Throws `std::bad_alloc`.
  bool finish(const RecordBatch &batch, bool isBroken);

private:
  IndexUpdate(const IndexPlace &place, FileDescriptor lock) noexcept
      : place_(place), lock_(std::move(lock)) {}

  [[nodiscard]] bool isSmallChange(const RecordBatch &batch) const noexcept;
  [[nodiscard]] bool append(const RecordBatch &batch);
  [[nodiscard]] bool makeAnew(const RecordBatch &batch);
  [[nodiscard]] bool writeAll(int file, const RecordBatch &batch);

  const IndexPlace &place_;
  const FileDescriptor lock_;
  /// Null if there is none, or it is broken.
  std::shared_ptr<const IndexFile> index_;
  FileDescriptor parts_;
  std::uint64_t endOfParts_ = 0;
};

} // namespace searchsystem
