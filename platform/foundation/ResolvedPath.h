#pragma once

#include <optional>
#include <string>

namespace searchsystem {

/// The path without links, "." and ".."; none if there is no such item, or on failure.
/// Throws `std::bad_alloc`. Any thread.
[[nodiscard]] std::optional<std::string> resolvedPath(const std::string &path);

} // namespace searchsystem
