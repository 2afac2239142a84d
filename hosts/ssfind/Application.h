#pragma once

#include "hosts/ssfind/ExitCode.h"

namespace ssfind {

/// The whole command, from its arguments to the code that it exits with.
[[nodiscard]] ExitCode run(int argc, const char *const *argv) noexcept;

} // namespace ssfind
