#pragma once

#include "hosts/ssfind/Options.h"

#include <string>
#include <variant>

namespace searchsystem::ssfind {

/// Text to print instead of a search: help or version.
struct Information {
  std::string text;
};

/// A task with the metadata index instead of a search.
enum class IndexTask { ShowStatus, Clear };

/// An error in the command line: lines of text that point at the place.
struct UsageError {
  std::string text;
};

using ParsedOptions = std::variant<Options, Information, IndexTask, UsageError>;

[[nodiscard]] ParsedOptions parseOptions(int argc, const char *const *argv);

} // namespace searchsystem::ssfind
