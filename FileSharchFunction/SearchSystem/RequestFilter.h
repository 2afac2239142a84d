#pragma once

#include "FileSharchFunction/SearchSystem/SearchSystem.h"
#include "platform/content/FileKinds.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/Ref.h"
#include "platform/foundation/TextPattern.h"

#include <optional>

namespace searchsystem {

/// The part of a request that a listing and a file's status decide: the kind of file, its name, its
/// modification date.
///
/// Ownership: copies what it needs of the request. Threads: any; immutable.
class RequestFilter {
public:
  /// With the kinds of a deep search, or null for a plain one. Throws `std::bad_alloc`.
  RequestFilter(const SearchPredicate &record, const FileKinds *kinds);

  enum class Kind { Nothing, SubFolder, File };

  /// What an entry is in a search for files of the class `type`: a sub-folder to search, a file of
  /// the class, or nothing. Throws `std::bad_alloc`.
  [[nodiscard]] Kind kindOf(FileItem &item, int type) const;

  /// Whether a file meets all conditions on name and date, or any. Where there are none it meets
  /// all, and not any. Throws `std::bad_alloc`.
  [[nodiscard]] bool meetsAll(FileItem &item) const;
  [[nodiscard]] bool meetsAny(FileItem &item) const;

  /// Whether all conditions must be met, or any one.
  [[nodiscard]] bool wantsAll() const noexcept { return wantsAll_; }

private:
  std::optional<FileKinds> kinds_;
  std::optional<TextPattern> name_;
  const Ref<const NSDate> modDateStart_;
  const Ref<const NSDate> modDateEnd_;
  const bool takesSubFolders_;
  const bool wantsAll_;
};

} // namespace searchsystem
