#pragma once

#include "hosts/ssfind/Options.h"

#include <string>
#include <variant>

namespace ssfind {

/// What the user asked to read instead of a search: help or version.
struct Information {
  std::string text;
};

/// What to do with the metadata index in place of a search.
enum class IndexTask { ShowStatus, Clear };

/// What is wrong with the command line; lines of text that point at the place.
struct UsageError {
  std::string text;
};

using ParsedOptions = std::variant<Options, Information, IndexTask, UsageError>;

[[nodiscard]] ParsedOptions parseOptions(int argc, const char *const *argv);

} // namespace ssfind
