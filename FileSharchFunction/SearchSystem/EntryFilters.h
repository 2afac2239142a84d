#pragma once

#include "platform/content/FileKinds.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSDate.h"

namespace searchsystem {

/// The class of all files that can be found.
inline constexpr int typeOfAll = 3;

/// The filters of the engine. They ask the system as little as possible. Any thread.
class EntryFilters {
public:
  EntryFilters() = delete;

  /// As `SearchEngine::defaultFilter`, with the kinds of a deep search, or null for a plain one.
  static char defaultFilter(FileItem &item, int type, char *isFolder, const FileKinds *kinds);

  /// As `SearchEngine::isAlias`.
  [[nodiscard]] static char isAlias(FileItem &item) noexcept;

  /// As `SearchEngine::fileModDateSearch`.
  [[nodiscard]] static char fileModDateSearch(FileItem &item, const NSDate *startDate,
                                              const NSDate *endDate) noexcept;

  /// Whether a date lies in the range, both ends included; null leaves an end open.
  [[nodiscard]] static bool isInRange(double date, const NSDate *start, const NSDate *end) noexcept;

  /// The search options for a keyword; `isDistinct`: exact letters.
  [[nodiscard]] static unsigned keywordOptions(char isDistinct) noexcept;
};

} // namespace searchsystem
