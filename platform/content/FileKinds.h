#pragma once

#include "platform/foundation/NSArray.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Which files a deep search looks at, by their extensions: photographs, documents, and what else
/// an imaging application opens.
///
/// Ownership: values; copies share what they hold. Threads: any; immutable.
class FileKinds {
public:
  /// All that there are.
  FileKinds() noexcept = default;

  /// Those of the given extensions only, in any case, whether or not they are in the table. What is
  /// no string is ignored. Throws `std::bad_alloc`.
  explicit FileKinds(const NSArray &extensions);

  /// Whether a file with this extension, in any case and without its dot, is of a file-type class:
  /// 0 photographs, 1 documents, 2 both, 3 both and all others.
  [[nodiscard]] bool includes(std::string_view extension, int fileType) const noexcept;

  /// What a file may hold text in.
  [[nodiscard]] static bool isDocument(std::string_view extension) noexcept;
  [[nodiscard]] static bool isPhotograph(std::string_view extension) noexcept;

private:
  /// What the search is narrowed to, in small letters; null for no such narrowing.
  std::shared_ptr<const std::vector<std::string>> only_;
};

} // namespace searchsystem
