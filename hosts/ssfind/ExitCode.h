#pragma once

namespace searchsystem::ssfind {

/// The command's exit codes.
enum class ExitCode : int {
  Matched = 0,
  NothingMatched = 1,
  /// Bad usage, a folder or a list that cannot be read, output that cannot be written.
  Trouble = 2,
  /// 128 plus the number of SIGINT, as in shells.
  Interrupted = 130
};

} // namespace searchsystem::ssfind
