#pragma once

namespace ssfind {

/// What the command answers to its caller.
enum class ExitCode : int {
  Matched = 0,
  NothingMatched = 1,
  /// Bad usage, a folder or a list that cannot be read, output that cannot be written.
  Trouble = 2,
  /// 128 and the number of SIGINT, as shells have it.
  Interrupted = 130
};

} // namespace ssfind
