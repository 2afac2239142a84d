#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace ssfind {

/// Standard error: messages, each a line of its own that begins with the program's name, and on a
/// terminal the line that tells how far the search has come.
class StandardError {
public:
  using Clock = std::chrono::steady_clock;

  /// Without `isTelling` there is never a progress line.
  explicit StandardError(bool isTelling);

  /// Writes lines that are complete as they are.
  void write(std::string_view lines);
  void report(std::string_view message);
  /// Reports what the system has against a file or folder.
  void reportFailure(std::string_view path, int error);

  /// Shows the count of matches, at most ten times a second, and not before a search has lasted.
  void showProgress(std::uint64_t matches, Clock::time_point now);
  /// Takes the progress line away, for something else to be written to the terminal.
  void clearProgress();

private:
  const bool showsProgress_;
  bool isShowing_ = false;
  Clock::time_point nextShowing_;
};

/// "name: message"
[[nodiscard]] std::string programMessage(std::string_view message);

} // namespace ssfind
