#include "hosts/ssfind/ShootingDate.h"

#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"
#include "platform/foundation/NSDate.h"

#include <cmath>

namespace ssfind {

// The library reports paths only, and reads the date by rules of its own. It is asked for here
// through the same source, so that what is printed is what has been compared.
std::optional<std::timespec> shootingDateOf(const std::string &path) {
  constexpr std::uint32_t tagDateTimeOriginal = 0x9003;
  const auto analysis = ExifAnalysis::startExifAnalysisAtPath(NSString::create(path).get());
  if (!analysis)
    return std::nullopt;
  const Ref<const NSString> text = analysis->getExifInfo(tagDateTimeOriginal);
  analysis->endExifAnalysis();
  const Ref<const NSDate> date = text ? NSDate::dateWithNaturalLanguageString(*text) : nullptr;
  if (!date)
    return std::nullopt;
  const double seconds = std::floor(date->timeIntervalSinceReferenceDate());
  return std::timespec{static_cast<std::time_t>(seconds) + NSDate::secondsFrom1970To2001, 0};
}

} // namespace ssfind
