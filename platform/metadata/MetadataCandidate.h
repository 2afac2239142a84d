#pragma once

#include <optional>
#include <string_view>

namespace searchsystem {

/// One file as a predicate sees it: its name, and its date, which is read from the disk on demand.
///
/// Ownership: borrows the name. Threads: one at a time.
class MetadataCandidate {
public:
  explicit MetadataCandidate(std::string_view fileName = {}) noexcept : name(fileName) {}
  MetadataCandidate(const MetadataCandidate &) = delete;
  MetadataCandidate &operator=(const MetadataCandidate &) = delete;

  /// When the file's content was last changed, in seconds since 2001; none if it cannot be read.
  [[nodiscard]] virtual std::optional<double> contentChangeDate() noexcept = 0;

  /// The last component of the file's path.
  std::string_view name;

protected:
  ~MetadataCandidate() = default;
};

} // namespace searchsystem
