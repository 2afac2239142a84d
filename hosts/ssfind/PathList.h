#pragma once

#include "hosts/ssfind/StandardError.h"

#include <optional>
#include <string>
#include <vector>

namespace searchsystem::ssfind {

/// Reads a file of paths, each ended by `separator`; "-" is standard input. Empty paths are
/// skipped.
///
/// None when the list cannot be read, which is reported, or an interrupt comes first.
[[nodiscard]] std::optional<std::vector<std::string>>
readPathList(const std::string &file, char separator, StandardError &errors);

} // namespace searchsystem::ssfind
