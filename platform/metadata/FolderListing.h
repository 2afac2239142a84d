#pragma once

#include "platform/foundation/FileStatus.h"

#include <cstddef>
#include <string>
#include <string_view>

/// The names of a folder that a search can meet, by what they name; hidden ones, and those that
/// only a package can have, are left out. Each name is ended by a NUL. The sub-folders stand in the
/// order of their bytes.
///
/// Ownership: borrows the names. Threads: one at a time.
struct FolderNames {
  std::string_view folders, files, links;
  /// Whether something in the folder may be called "Contents", as it is in a package.
  bool mayHoldContents = false;

  /// Calls `look` with each of `names`; what it is given is ended by a NUL.
  template <class Look> static void forEach(std::string_view names, Look look) {
    while (!names.empty()) {
      const std::size_t end = names.find('\0');
      look(names.substr(0, end));
      names.remove_prefix(end + 1);
    }
  }
};

/// Takes the names of a folder one by one.
///
/// Ownership: owns the names. Threads: one at a time.
class FolderListing {
public:
  /// Throws `std::bad_alloc`, and then the name has not been added.
  void add(FileKind kind, std::string_view name);

  void clear() noexcept;

  /// Forgets all names but those of sub-folders.
  void clearFiles() noexcept;

  /// How many bytes the names take, and how many those that are not of sub-folders.
  [[nodiscard]] std::size_t size() const noexcept { return folders_.size() + sizeOfFiles(); }
  [[nodiscard]] std::size_t sizeOfFiles() const noexcept { return files_.size() + links_.size(); }

  [[nodiscard]] std::size_t count() const noexcept { return count_; }

  /// The names, to be asked for when all have been added; valid until the listing is cleared.
  /// Throws `std::bad_alloc`.
  [[nodiscard]] FolderNames names();

private:
  std::string folders_, files_, links_;
  std::size_t count_ = 0;
  bool mayHoldContents_ = false;
};
