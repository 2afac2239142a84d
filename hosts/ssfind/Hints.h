#pragma once

#include "hosts/ssfind/Options.h"

#include <string>
#include <string_view>

namespace searchsystem::ssfind {

/// What to add to the message that there is no such folder: how to search for a file of that name.
/// Empty if it can hardly have been meant.
[[nodiscard]] std::string hintForMissingFolder(std::string_view typed, const Options &options);

/// The long option that a word of one dash stands for in other programs, or means here; empty for
/// letters.
[[nodiscard]] std::string_view longOptionForWord(std::string_view word) noexcept;

/// What to say of plain texts with wildcards when nothing matches; empty if they have none.
[[nodiscard]] std::string hintForWildcards(bool isInName, bool isInKeyword);

} // namespace searchsystem::ssfind
