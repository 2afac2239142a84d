#pragma once

#include "hosts/ssfind/Options.h"

#include <vector>

namespace searchsystem::ssfind {

/// A search of the library's, and what is tested of its matches beside the restrictions.
struct Pass {
  Conditions conditions;
  /// Whether all further conditions on the name are tested, or any.
  enum class Names { NotTested, All, Any } names = Names::NotTested;
};

/// A file that passes a stage is found by one of its passes at least.
using Stage = std::vector<Pass>;

/// The stages that a file must pass, one after the other. The first looks at folders and lists,
/// and its matches are tested for the restrictions; each of the others looks at what is left.
///
/// No file is read that a test of its name, size or path leaves out: these come in a stage before
/// the first that reads.
[[nodiscard]] std::vector<Stage> stagesOf(const Options &options);

} // namespace searchsystem::ssfind
