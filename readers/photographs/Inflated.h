#pragma once

#include "readers/photographs/ReadBudget.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace searchsystem {

/// The first `most` bytes of what was compressed by zlib (RFC 1950), as far as it is sound.
[[nodiscard]] std::string inflated(std::string_view bytes, std::size_t most, ReadBudget &budget);

} // namespace searchsystem
