#pragma once

#include <cstdlib>
#include <ctime>

namespace searchsystem {

/// Has local time follow a zone while it lives.
class TimeZone {
public:
  explicit TimeZone(const char *name) {
    setenv("TZ", name, 1);
    tzset();
  }
  ~TimeZone() { unsetenv("TZ"); }
  TimeZone(const TimeZone &) = delete;
};

} // namespace searchsystem
