#include "platform/foundation/Gestalt.h"

#include <atomic>

namespace searchsystem {

namespace {

constexpr int gestaltUndefSelectorErr = -5551;
/// A system with a metadata index.
constexpr std::int32_t systemVersion = 0x1058;

std::atomic<std::int32_t> versionForTesting{0};

} // namespace

int Gestalt(std::uint32_t selector, std::int32_t *response) noexcept {
  if (selector != gestaltSystemVersion)
    return gestaltUndefSelectorErr;
  const std::int32_t version = versionForTesting.load();
  *response = version != 0 ? version : systemVersion;
  return 0;
}

void setSystemVersionForTesting(std::int32_t version) noexcept { versionForTesting.store(version); }

} // namespace searchsystem
