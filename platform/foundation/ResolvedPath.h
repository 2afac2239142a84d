#pragma once

#include <optional>
#include <string>

/// The path without links, "." and ".."; none where there is no such item, or that cannot be told.
/// Throws `std::bad_alloc`. Any thread.
[[nodiscard]] std::optional<std::string> resolvedPath(const std::string &path);
