#pragma once

#include "readers/documents/Arena.h"
#include "readers/documents/CrossReferenceTable.h"
#include "readers/documents/FileObjects.h"
#include "readers/documents/Object.h"
#include "readers/documents/SourceWindow.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Finds the objects of a file without its cross-references, by their `12 0 obj`. The last one of a
/// number counts.
class FileScan {
public:
  struct ObjectStream {
    std::uint32_t number;
    std::uint64_t offset;
  };

  FileScan(SourceWindow &window, ParseAllowance &allowance) noexcept
      : window_(window), objects_(window, arena_, allowance) {}

  /// Looks through the whole file, and enters what it finds.
  void run(CrossReferenceTable &table);
  /// In the order of the file; what they hold is not entered.
  [[nodiscard]] const std::vector<ObjectStream> &objectStreams() const noexcept {
    return objectStreams_;
  }
  /// The offset of the last trailer that names a catalog: of its dictionary, or of the
  /// cross-reference stream that has it.
  [[nodiscard]] std::optional<std::uint64_t> trailerOffset() const noexcept { return trailer_; }
  /// The last object that calls itself a catalog.
  [[nodiscard]] std::optional<Reference> catalog() const noexcept { return catalog_; }

private:
  /// Takes what is at the offset and answers where to look on.
  [[nodiscard]] std::uint64_t takeObject(std::uint64_t offset, std::uint64_t behind,
                                         Reference reference, CrossReferenceTable &table);
  void takeTrailer(std::uint64_t offset);

  SourceWindow &window_;
  /// For what is only looked at.
  Arena arena_;
  FileObjects objects_;
  std::vector<ObjectStream> objectStreams_;
  std::optional<std::uint64_t> trailer_;
  std::optional<Reference> catalog_;
};

} // namespace searchsystem
