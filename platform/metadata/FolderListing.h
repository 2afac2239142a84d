#pragma once

#include "platform/foundation/FileStatus.h"

#include <cstddef>
#include <string>
#include <string_view>

/// The names of a folder that a search can meet, hidden ones left out, by what they name. Each name
/// is ended by a NUL.
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

  /// How many bytes the names take.
  [[nodiscard]] std::size_t size() const noexcept {
    return folders_.size() + files_.size() + links_.size();
  }

  [[nodiscard]] std::size_t count() const noexcept { return count_; }

  /// Valid until the listing changes.
  [[nodiscard]] FolderNames names() const noexcept {
    return {folders_, files_, links_, mayHoldContents_};
  }

private:
  std::string folders_, files_, links_;
  std::size_t count_ = 0;
  bool mayHoldContents_ = false;
};
