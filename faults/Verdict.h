#pragma once

#include <string>

/// What a driver is doing, printed with each fault that it finds.
extern std::string doing;

/// Notes a fault and goes on: one run shall find as many as it can. Any thread.
void fault(const std::string &what);

/// Notes a fault if the condition does not hold; answers whether it does.
bool check(bool isTrue, const std::string &what);

/// Ends the program within so many seconds, with its stack in a core, unless it is called again: a
/// search that never ends is a fault as well. 0 ends the watch.
void mustGoOnWithin(int seconds);

/// The exit code of the program, after a line that tells what has been done.
int verdict(const std::string &summary);
