#include "hosts/ssfind/PhotographDetails.h"

#include "hosts/ssfind/CFObject.h"
#include "platform/content/Content.h"
#include "platform/foundation/LocalTime.h"
#include "platform/imagetag/ShootingDate.h"

#include <cmath>

namespace searchsystem::ssfind {

namespace {

std::timespec timeOf(CFAbsoluteTime date) {
  return {static_cast<std::time_t>(std::floor(date)) + PFSecondsFrom1970To2001, 0};
}

/// Takes over a reference, which may be null.
std::optional<std::string> taken(CFStringRef text) {
  const CFObject<CFStringRef> owned(text);
  return text != nullptr
             ? std::optional<std::string>(CFStringGetCStringPtr(text, kCFStringEncodingUTF8))
             : std::nullopt;
}

void readDeep(const std::string &path, PhotographDetails &details) {
  const auto name = own(CFStringCreateWithFileSystemRepresentation(nullptr, path.c_str()));
  PFPhotograph photograph;
  // What was found of one that could not be read to its end counts, too.
  PFContentCopyPhotograph(name.get(), &photograph);
  if (photograph.hasDate == 1)
    details.taken = timeOf(photograph.date);
  details.maker = taken(photograph.maker);
  details.model = taken(photograph.model);
}

} // namespace

PhotographDetails photographDetailsOf(const std::string &path, bool isDeep) {
  PhotographDetails details;
  if (isDeep)
    readDeep(path, details);
  CFAbsoluteTime date = 0;
  if (!details.taken && PFImageGetShootingDate(path.c_str(), &date) == 1)
    details.taken = timeOf(date);
  return details;
}

} // namespace searchsystem::ssfind
