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
  std::string_view folders, links;
  /// Files with ASCII names; with other names in which ASCII text is found by its bytes
  /// (`FoldedText::holdsItsASCII`); with all other names.
  std::string_view files, otherFiles, foldingFiles;
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

  /// The bytes of the names of sub-folders, and of all others.
  [[nodiscard]] std::size_t sizeOfFolders() const noexcept { return folders_.size(); }
  [[nodiscard]] std::size_t sizeOfFiles() const noexcept {
    return links_.size() + files_.size() + otherFiles_.size() + foldingFiles_.size();
  }

  /// How many names there are; forgotten ones do not count.
  [[nodiscard]] std::size_t count() const noexcept { return folderCount_ + fileCount_; }
  [[nodiscard]] std::size_t countOfFiles() const noexcept { return fileCount_; }

  /// The names, once all have been added; valid until the listing is cleared. Throws
  /// `std::bad_alloc`.
  [[nodiscard]] FolderNames names();

  /// Those of files and links so far.
  [[nodiscard]] FolderNames files() const noexcept {
    return {{}, links_, files_, otherFiles_, foldingFiles_, false};
  }

private:
  std::string folders_, links_, files_, otherFiles_, foldingFiles_;
  std::size_t folderCount_ = 0, fileCount_ = 0;
  bool mayHoldContents_ = false;
};

} // namespace searchsystem
