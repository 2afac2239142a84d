#pragma once

#include "hosts/ssfind/StandardError.h"

#include <optional>
#include <string>

namespace searchsystem::ssfind {

/// Lines that say where the metadata index is and what it holds; none when it cannot be read, which
/// is reported.
[[nodiscard]] std::optional<std::string> indexStatus(StandardError &errors);

/// Removes the metadata index; false when it cannot be removed, which is reported.
[[nodiscard]] bool clearIndex(StandardError &errors);

} // namespace searchsystem::ssfind
