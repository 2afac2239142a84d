#include "hosts/ssfind/ShootingDate.h"

#include "platform/foundation/LocalTime.h"
#include "platform/imagetag/ShootingDate.h"

#include <cmath>

namespace searchsystem::ssfind {

std::optional<std::timespec> shootingDateOf(const std::string &path) {
  CFAbsoluteTime date = 0;
  if (PFImageGetShootingDate(path.c_str(), &date) != 1)
    return std::nullopt;
  return std::timespec{static_cast<std::time_t>(std::floor(date)) + PFSecondsFrom1970To2001, 0};
}

} // namespace searchsystem::ssfind
