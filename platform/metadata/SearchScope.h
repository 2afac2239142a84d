#pragma once

#include <string>

/// The folder that a search scope names, without links in its path. Where there is none of that
/// name, blanks around the path are left out. Empty when there is no such folder. Throws
/// `std::bad_alloc`. Any thread.
[[nodiscard]] std::string resolvedSearchScope(const std::string &scope);
