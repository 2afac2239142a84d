#pragma once

#include <cstdlib>
#include <pty.h>
#include <string>
#include <termios.h>
#include <unistd.h>

/// A terminal that passes on what is written to it as it is.
class PseudoTerminal {
public:
  PseudoTerminal() {
    if (openpty(&outside_, &inside_, nullptr, nullptr, nullptr) != 0)
      std::abort();
    termios settings{};
    tcgetattr(inside_, &settings);
    cfmakeraw(&settings);
    tcsetattr(inside_, TCSANOW, &settings);
  }
  ~PseudoTerminal() {
    closeInside();
    close(outside_);
  }
  PseudoTerminal(const PseudoTerminal &) = delete;
  PseudoTerminal &operator=(const PseudoTerminal &) = delete;

  /// The end that a program writes to.
  [[nodiscard]] int inside() const { return inside_; }
  /// The end at which it is read.
  [[nodiscard]] int outside() const { return outside_; }

  void closeInside() {
    if (inside_ >= 0)
      close(inside_);
    inside_ = -1;
  }

  /// All that is written until the last program closes its end.
  [[nodiscard]] std::string readAll() {
    closeInside();
    std::string text;
    char bytes[4096];
    for (ssize_t size; (size = read(outside_, bytes, sizeof bytes)) > 0;)
      text.append(bytes, static_cast<std::size_t>(size));
    return text;
  }

private:
  int outside_ = -1;
  int inside_ = -1;
};
