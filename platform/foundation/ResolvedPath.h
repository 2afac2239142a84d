#pragma once

#include <string>

/// The path without links, "." and ".."; the path itself where there is no such item. Throws
/// `std::bad_alloc`. Any thread.
[[nodiscard]] std::string resolvedPath(std::string path);
