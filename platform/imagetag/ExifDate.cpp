#include "platform/imagetag/ExifDate.h"

#include "platform/imagetag/TagInfo.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace searchsystem {

namespace {

/// A decimal number as parsed by `atoi`, clamped to 32 bits and truncated to 16.
std::int16_t numberOf(const char *text) noexcept {
  const long number = std::strtol(text, nullptr, 10);
  return static_cast<std::int16_t>(std::clamp<long>(
      number, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

bool isDigits(const char *text) noexcept { return text[std::strspn(text, "0123456789")] == '\0'; }

} // namespace

int FS_CheckDate(char *text, DateTimeRec *date) noexcept {
  constexpr std::array<std::size_t, 6> begins{0, 5, 8, 11, 14, 17};
  *date = {};
  const std::size_t length = std::strlen(text);
  std::array<const char *, begins.size()> fields{};
  for (std::size_t i = 0; i < begins.size(); ++i) {
    if (i > 0 && begins[i] - 1 < length)
      text[begins[i] - 1] = '\0';
    fields[i] = begins[i] < length ? text + begins[i] : "";
  }
  if (!isDigits(fields[0]) || !isDigits(fields[1]) || !isDigits(fields[2]))
    return 0;
  date->year = numberOf(fields[0]);
  date->month = numberOf(fields[1]);
  date->day = numberOf(fields[2]);
  date->hour = numberOf(fields[3]);
  date->minute = numberOf(fields[4]);
  date->second = numberOf(fields[5]);
  return date->year != 0 || date->month != 0 || date->day != 0 ? 1 : 0;
}

Ref<const NSString> shootingDateText(const CIMAGETAG &imageTag) {
  TagInfo info = tagInfoOf(imageTag, exifDirectory, tagDateTimeOriginal);
  if (!info)
    info = tagInfoOf(imageTag, exifDirectory, tagDateTimeDigitized);
  if (!isText(info))
    return nullptr;
  DateTimeRec date{};
  if (FS_CheckDate(info->value.bytes, &date) == 0)
    return NSString::create("test");
  // Room for six signed 16-bit numbers and five separators.
  std::array<char, 48> formatted;
  const int length =
      std::snprintf(formatted.data(), formatted.size(), "%04d/%02d/%02d %02d:%02d:%02d", date.year,
                    date.month, date.day, date.hour, date.minute, date.second);
  return NSString::create({formatted.data(), static_cast<std::size_t>(length)});
}

} // namespace searchsystem
