#pragma once

#include "platform/content/PhotographContent.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

namespace searchsystem {

/// One item of a search: what filters and conditions ask about it, and its full path, which is
/// built only when needed.
///
/// Ownership: borrows what it is made from. Threads: one at a time.
class SearchItem {
public:
  explicit SearchItem(const NSString &path, FileKind listedKind = FileKind::Unknown) noexcept
      : file(path, listedKind), pathOrFolder_(path) {}

  SearchItem(const NSString &folder, DirectoryListing &listing,
             const DirectoryEntry &entry) noexcept
      : file(listing, entry), pathOrFolder_(folder), isEntry_(true) {}

  /// Throws `std::bad_alloc`.
  [[nodiscard]] const Ref<const NSString> &path() {
    if (!path_)
      path_ = isEntry_ ? pathOrFolder_.stringByAppendingPathComponent(file.name())
                       : Ref<const NSString>(&pathOrFolder_);
    return path_;
  }

  FileItem file;
  /// The file, where a deep reading may follow.
  OpenFile photograph;

private:
  const NSString &pathOrFolder_;
  const bool isEntry_ = false;
  Ref<const NSString> path_;
};

} // namespace searchsystem
