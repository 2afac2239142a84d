#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace searchsystem::ssfind {

/// Standard error: messages, each on its own line and beginning with the program's name, and on a
/// terminal a progress line.
class StandardError {
public:
  using Clock = std::chrono::steady_clock;

  explicit StandardError(bool showsProgress);

  /// Writes complete lines as they are.
  void write(std::string_view lines);
  void report(std::string_view message);
  /// Reports a failure of the system's about a file or folder, and what else there is to say.
  void reportFailure(std::string_view path, int error, std::string_view addition = "");

  /// Shows a line for a while, at most ten times a second, and not in a short search.
  void showProgress(std::string_view line, Clock::time_point now);
  /// Removes the progress line, so that something else can be written to the terminal.
  void clearProgress();

private:
  const bool showsProgress_;
  bool isShowing_ = false;
  Clock::time_point nextShowing_;
};

/// "name: message"
[[nodiscard]] std::string programMessage(std::string_view message);

} // namespace searchsystem::ssfind
