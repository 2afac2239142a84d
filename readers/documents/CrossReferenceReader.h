#pragma once

#include "readers/documents/CrossReferenceTable.h"
#include "readers/documents/FileObjects.h"
#include "readers/documents/Object.h"
#include "readers/documents/SourceWindow.h"
#include "readers/documents/StreamDecoder.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace searchsystem {

/// Reads the chain of cross-reference tables and streams from the end of the file to the oldest
/// (ISO 32000-2, 7.5.4 to 7.5.8), also where both kinds are mixed.
class CrossReferenceReader {
public:
  CrossReferenceReader(SourceWindow &window, FileObjects &objects, StreamDecoder &decoder,
                       ParseAllowance &allowance, CrossReferenceTable &table) noexcept
      : window_(window), objects_(objects), decoder_(decoder), allowance_(allowance),
        table_(table) {}

  /// False if a part of the chain cannot be read; what was read before is in the table.
  [[nodiscard]] bool read();
  /// Of the newest part that names a catalog.
  [[nodiscard]] const Dictionary &trailer() const noexcept { return trailer_; }
  /// What stands in front of the header. Offsets may count from there or from the file's beginning.
  [[nodiscard]] std::uint64_t headerOffset() const noexcept { return headerOffset_; }

private:
  [[nodiscard]] std::uint64_t findHeader();
  [[nodiscard]] std::optional<std::uint64_t> findStart();
  /// Reads one part, and says where an older one is.
  [[nodiscard]] bool readPart(std::uint64_t offset);
  [[nodiscard]] bool readTable(std::uint64_t offset);
  [[nodiscard]] bool readStream(std::uint64_t offset);
  /// Reads the entries up to the trailer and answers where that is.
  [[nodiscard]] std::optional<std::uint64_t> readEntries(std::uint64_t offset);
  void takeRow(std::uint64_t number, std::string_view row, const std::vector<std::size_t> &widths);
  void takeTrailer(const Dictionary &dictionary);
  void add(std::uint64_t number, CrossReference::Kind kind, std::uint64_t position,
           std::uint32_t index);

  SourceWindow &window_;
  FileObjects &objects_;
  StreamDecoder &decoder_;
  ParseAllowance &allowance_;
  CrossReferenceTable &table_;
  Dictionary trailer_;
  std::uint64_t headerOffset_ = 0;
  std::unordered_set<std::uint64_t> seen_;
  std::optional<std::uint64_t> previous_;
  /// Numbers that a table calls free: the stream that stands beside it may know better (7.5.8.4).
  std::vector<std::uint64_t> freeNumbers_;
};

} // namespace searchsystem
