#pragma once

#include "hosts/ssfind/ExitCode.h"

namespace searchsystem::ssfind {

/// Runs the whole command; returns its exit code.
[[nodiscard]] ExitCode run(int argc, const char *const *argv) noexcept;

} // namespace searchsystem::ssfind
