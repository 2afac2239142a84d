#pragma once

#include "platform/content/Content.h"

#include <cstdint>
#include <optional>
#include <string>

namespace searchsystem::ssfind {

/// How far the searches are, in a line for the user.
struct ProgressText {
  /// How many files the present search looks at, if that is known, and how many had been read
  /// before it.
  std::optional<std::uint64_t> expectedFiles;
  std::uint64_t filesBefore = 0;

  [[nodiscard]] std::string text(std::uint64_t matches, const PFContentProgress &progress) const;
};

} // namespace searchsystem::ssfind
