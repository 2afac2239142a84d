#pragma once

#include "hosts/ssfind/Options.h"

#include <string_view>
#include <vector>

namespace searchsystem::ssfind {

/// The searches of the library that together find the files that meet the conditions, each file in
/// one search only. Empty if no file can meet them.
[[nodiscard]] std::vector<Conditions> searchesFor(const Conditions &conditions);

/// Whether one of these searches may use the metadata index: only where that finds the same files
/// as a walk through the folder, each once.
[[nodiscard]] bool mayUseIndex(const Conditions &search, std::string_view folder) noexcept;

} // namespace searchsystem::ssfind
