#pragma once

#include "hosts/ssfind/Options.h"

#include <string>
#include <variant>

namespace ssfind {

/// What the user asked to read instead of a search: help or version.
struct Information {
  std::string text;
};

/// What is wrong with the command line; lines of text that point at the place.
struct UsageError {
  std::string text;
};

[[nodiscard]] std::variant<Options, Information, UsageError> parseOptions(int argc,
                                                                          const char *const *argv);

} // namespace ssfind
