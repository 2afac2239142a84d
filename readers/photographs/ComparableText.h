#pragma once

#include <string>
#include <string_view>

namespace searchsystem {

/// A text of several lines, in UTF-8 that is not checked, in the form in which the texts of
/// documents are compared. Without blanks at its ends.
[[nodiscard]] std::string comparableText(std::string_view text);

} // namespace searchsystem
