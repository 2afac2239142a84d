#pragma once

#include <string>

namespace searchsystem {

/// The current step of a driver, printed with each fault that it finds.
extern std::string doing;

/// Notes a fault and returns, so that one run finds many. Any thread.
void fault(const std::string &what);

/// Notes a fault unless the condition holds; returns the condition.
bool check(bool isTrue, const std::string &what);

/// Ends the program after `seconds`, with its stack in a core, unless called again: a search that
/// never ends is a fault as well. 0 ends the watch.
void mustGoOnWithin(int seconds);

/// Prints a line about the work done; returns the exit code of the program.
int verdict(const std::string &summary);

} // namespace searchsystem
