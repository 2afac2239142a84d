#include "hosts/ssfind/StandardError.h"

#include "hosts/ssfind/Terminal.h"
#include "hosts/ssfind/VisibleText.h"

#include <cstring>
#include <unistd.h>

namespace searchsystem::ssfind {

namespace {

constexpr std::chrono::milliseconds delayOfFirst{300};
constexpr std::chrono::milliseconds interval{100};

void writeError(std::string_view text) {
  // There is nowhere to report a failure.
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

} // namespace

StandardError::StandardError(bool showsProgress)
    : showsProgress_(showsProgress && isCapableTerminal(STDERR_FILENO)),
      nextShowing_(Clock::now() + delayOfFirst) {}

void StandardError::write(std::string_view lines) {
  clearProgress();
  writeError(lines);
}

void StandardError::report(std::string_view message) { write(programMessage(message) + '\n'); }

void StandardError::reportFailure(std::string_view path, int error, std::string_view addition) {
  report(((path.empty() ? "''" : visible(path)) + ": " + std::strerror(error)).append(addition));
}

void StandardError::showProgress(std::string_view line, Clock::time_point now) {
  if (!showsProgress_ || now < nextShowing_)
    return;
  nextShowing_ = now + interval;
  isShowing_ = true;
  writeError(std::string("\r\x1b[K").append(line));
}

void StandardError::clearProgress() {
  if (!isShowing_)
    return;
  isShowing_ = false;
  writeError("\r\x1b[K");
}

std::string programMessage(std::string_view message) {
  return std::string("ssfind: ").append(message);
}

} // namespace searchsystem::ssfind
