#pragma once

#include "readers/photographs/ReadBudget.h"

#include <string>
#include <string_view>

namespace searchsystem {

/// What was compressed, as far as it is sound, up to the longest packet.
///
/// By zlib (RFC 1950).
[[nodiscard]] std::string inflated(std::string_view bytes, ReadBudget &budget);
/// By Brotli (RFC 7932).
[[nodiscard]] std::string unbrotlied(std::string_view bytes, ReadBudget &budget);

} // namespace searchsystem
