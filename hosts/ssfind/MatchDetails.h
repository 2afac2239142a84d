#pragma once

#include "hosts/ssfind/EntryStatus.h"
#include "hosts/ssfind/PhotographDetails.h"

#include <optional>

namespace searchsystem::ssfind {

/// Details of a match besides its path, as far as they can be read.
struct MatchDetails {
  std::optional<EntryStatus> status;
  PhotographDetails photograph;

  [[nodiscard]] std::optional<std::timespec> modified() const {
    return status ? std::optional(status->modified) : std::nullopt;
  }
};

} // namespace searchsystem::ssfind
