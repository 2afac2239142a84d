#pragma once

#include <string>
#include <string_view>

namespace searchsystem::ssfind {

/// Appends a name so that a terminal shows all of it and does nothing else: control characters as
/// \n, \t, \r, \x1b or \u{202e}, bytes that are not UTF-8 as \xff, and a backslash as two, so that
/// no two names look the same.
void appendVisible(std::string &out, std::string_view text);

[[nodiscard]] std::string visible(std::string_view text);

} // namespace searchsystem::ssfind
