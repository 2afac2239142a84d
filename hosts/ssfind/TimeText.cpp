#include "hosts/ssfind/TimeText.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace searchsystem::ssfind {

namespace {

void appendDateAndTime(std::string &out, const std::tm &fields, char between) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04lld-%02d-%02d%c%02d:%02d:%02d",
                fields.tm_year + 1900LL, fields.tm_mon + 1, fields.tm_mday, between, fields.tm_hour,
                fields.tm_min, fields.tm_sec);
  out += text.data();
}

} // namespace

bool appendTimestamp(std::string &out, const std::timespec &time) {
  std::tm fields{};
  if (localtime_r(&time.tv_sec, &fields) == nullptr)
    return false;
  const long offset = fields.tm_gmtoff;
  const bool isWritable = offset % 60 == 0;
  if (!isWritable)
    gmtime_r(&time.tv_sec, &fields);
  appendDateAndTime(out, fields, 'T');
  std::array<char, 32> rest{};
  std::snprintf(rest.data(), rest.size(), ".%06ld", time.tv_nsec / 1000);
  out += rest.data();
  if (!isWritable) {
    out += 'Z';
    return true;
  }
  std::snprintf(rest.data(), rest.size(), "%c%02ld:%02ld", offset < 0 ? '-' : '+',
                std::labs(offset) / 3600, std::labs(offset) / 60 % 60);
  out += rest.data();
  return true;
}

bool appendClockTime(std::string &out, const std::timespec &time) {
  std::tm fields{};
  if (localtime_r(&time.tv_sec, &fields) == nullptr)
    return false;
  appendDateAndTime(out, fields, ' ');
  return true;
}

} // namespace searchsystem::ssfind
