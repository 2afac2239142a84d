#pragma once

#include <cstdlib>
#include <ctime>

namespace ssfind {

/// Has local time follow a zone while it lives.
class TimeZone {
public:
  explicit TimeZone(const char *name) {
    setenv("TZ", name, 1);
    tzset();
  }
  ~TimeZone() {
    unsetenv("TZ");
    tzset();
  }
  TimeZone(const TimeZone &) = delete;
  TimeZone &operator=(const TimeZone &) = delete;
};

} // namespace ssfind
