#pragma once

#include "FileSharchFunction/SearchSystem/SearchSystem.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/Ref.h"
#include "platform/foundation/TextPattern.h"

#include <optional>

/// What the listing of a folder and the status of its entries decide about these in a search: the
/// kind of file, the name and the date of modification.
///
/// Ownership: keeps what it needs of the request. Threads: any; it never changes.
class RequestFilter {
public:
  /// Throws `std::bad_alloc`.
  explicit RequestFilter(const SearchPredicate &record);

  enum class Kind { Nothing, SubFolder, File };

  /// What an entry is in a search for files of the class `type`: a folder that is to be searched
  /// too, a file that may be found, or nothing. Throws `std::bad_alloc`.
  [[nodiscard]] Kind kindOf(FileItem &item, int type) const;

  /// Whether a file meets the conditions on name and date, all of them or any one. Where there are
  /// none it meets all of them, and not any one. Throws `std::bad_alloc`.
  [[nodiscard]] bool meetsAll(FileItem &item) const;
  [[nodiscard]] bool meetsAny(FileItem &item) const;

  /// All conditions, or else any one, are to be met.
  [[nodiscard]] bool wantsAll() const noexcept { return wantsAll_; }

private:
  std::optional<TextPattern> name_;
  const Ref<const NSDate> modDateStart_;
  const Ref<const NSDate> modDateEnd_;
  const bool takesSubFolders_;
  const bool wantsAll_;
};
