#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace searchsystem::ssfind {

/// When a photograph was taken, as a search by shooting date compares it; none if the file has no
/// such date.
[[nodiscard]] std::optional<std::timespec> shootingDateOf(const std::string &path);

} // namespace searchsystem::ssfind
