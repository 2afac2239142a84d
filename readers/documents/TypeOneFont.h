#pragma once

#include <map>
#include <string>
#include <string_view>

namespace searchsystem {

/// The encoding that a Type 1 program has of its own (Adobe Type 1 Font Format, 2.3): the names of
/// its codes; none if it is the standard encoding, or cannot be found. The names are views into the
/// program, of which the part that is not encrypted will do.
[[nodiscard]] std::map<unsigned char, std::string_view> typeOneEncoding(std::string_view program);

} // namespace searchsystem
