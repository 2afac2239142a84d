#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace searchsystem::ssfind {

/// What is shown of a photograph, as far as it says so.
struct PhotographDetails {
  /// When it was taken, as a search by shooting date compares it.
  std::optional<std::timespec> taken;
  /// Of the camera; only a deep reading has them.
  std::optional<std::string> maker, model;
};

/// Reads the photograph at `path`, as the searches do that are deep, or plain. Throws
/// `std::bad_alloc`.
[[nodiscard]] PhotographDetails photographDetailsOf(const std::string &path, bool isDeep);

} // namespace searchsystem::ssfind
