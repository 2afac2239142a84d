#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace ssfind {

/// When the photograph in a file was taken, as a search by shooting date compares it; nothing where
/// the file does not tell.
[[nodiscard]] std::optional<std::timespec> shootingDateOf(const std::string &path);

} // namespace ssfind
