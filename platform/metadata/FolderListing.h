#pragma once

#include "platform/foundation/FileStatus.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace searchsystem {

/// The names in a folder that a search uses, by kind: neither hidden ones nor sub-folders whose
/// names make them packages. A NUL ends each name. The sub-folders are in the order of their
/// bytes.
///
/// Ownership: borrows the names. Threads: one at a time.
struct FolderNames {
  std::string_view folders, files, links;
  /// Whether the folder may hold an entry "Contents", as packages do.
  bool mayHoldContents = false;

  /// Calls `look` with each of `names`; a NUL follows it.
  template <class Look> static void forEach(std::string_view names, Look look) {
    while (!names.empty()) {
      const std::size_t end = names.find('\0');
      look(names.substr(0, end));
      names.remove_prefix(end + 1);
    }
  }
};

/// Collects the names in a folder.
///
/// Ownership: owns the names. Threads: one at a time.
class FolderListing {
public:
  /// If it throws `std::bad_alloc`, the name has not been added.
  void add(FileKind kind, std::string_view name);

  void clear() noexcept;

  /// Forgets all names except those of sub-folders.
  void clearFiles() noexcept;

  /// The bytes of all names, and of those that are not of sub-folders.
  [[nodiscard]] std::size_t size() const noexcept { return folders_.size() + sizeOfFiles(); }
  [[nodiscard]] std::size_t sizeOfFiles() const noexcept { return files_.size() + links_.size(); }

  [[nodiscard]] std::size_t count() const noexcept { return count_; }

  /// The names, once all have been added; valid until the listing is cleared. Throws
  /// `std::bad_alloc`.
  [[nodiscard]] FolderNames names();

private:
  std::string folders_, files_, links_;
  std::size_t count_ = 0;
  bool mayHoldContents_ = false;
};

} // namespace searchsystem
