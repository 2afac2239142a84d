#pragma once

#include "hosts/ssfind/TextError.h"

#include <string>
#include <string_view>
#include <variant>

namespace searchsystem::ssfind {

/// The regular expression that matches what a pattern of wildcards does, from its first character
/// to its last.
///
/// `*` is any text and `?` any character without a "/"; `[a-z]` is one of these and `[!a-z]` none
/// of them; `{a,b}` is either; `**` between slashes or at an end is any folders; a backslash takes
/// what follows as it is.
[[nodiscard]] std::variant<std::string, TextError> expressionOfGlob(std::string_view pattern);

} // namespace searchsystem::ssfind
