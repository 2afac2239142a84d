#pragma once

#include "hosts/ssfind/Options.h"

#include <string_view>
#include <vector>

namespace ssfind {

/// The searches of the library that find, taken together, what meets the conditions: none of them
/// finds what another does. Empty where no file can meet them.
[[nodiscard]] std::vector<Conditions> searchesFor(const Conditions &conditions);

/// Whether one of these searches may be answered from the metadata index: only where that finds
/// what a walk through the folder would, each file once.
[[nodiscard]] bool mayUseIndex(const Conditions &search, std::string_view folder) noexcept;

} // namespace ssfind
