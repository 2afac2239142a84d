#pragma once

#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSDate.h"

/// The filters of the engine, for an item that is asked as little as possible. Any thread.

/// As `SearchEngine::defaultFilter`.
char defaultFilter(FileItem &item, int type, char *isFolder);

/// As `SearchEngine::isAlias`.
[[nodiscard]] char isAlias(FileItem &item) noexcept;

/// As `SearchEngine::fileModDateSearch`.
[[nodiscard]] char fileModDateSearch(FileItem &item, const NSDate *startDate,
                                     const NSDate *endDate) noexcept;

/// The options of a search for a keyword, `isDistinct` for its very letters.
[[nodiscard]] unsigned keywordOptions(char isDistinct) noexcept;
