#pragma once

#include <ctime>
#include <string>

namespace searchsystem::ssfind {

/// Appends a local time with its offset (RFC 3339) in whole microseconds, rounded down:
/// 2024-05-17T10:30:00.123456+02:00. In UTC, with a Z, if the offset is no whole number of minutes.
/// False, and nothing is appended, for a time too far away for a calendar.
bool appendTimestamp(std::string &out, const std::timespec &time);

/// Appends a local time for people: 2024-05-17 10:30:00. False as above.
bool appendClockTime(std::string &out, const std::timespec &time);

} // namespace searchsystem::ssfind
