#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace searchsystem {

/// Puts a line that stands as it is seen, from left to right, in reading order: what runs from
/// right to left is turned round, but for the numbers and the other scripts within it. `clusters`
/// are the places and lengths of characters that stay together as they are, in order.
[[nodiscard]] std::string
inReadingOrder(std::string_view seen,
               const std::vector<std::pair<std::size_t, std::size_t>> &clusters);

} // namespace searchsystem
