#pragma once

#include <string_view>

namespace searchsystem {

/// More results are visible; posted with the query as its object, never from inside `startQuery`.
inline constexpr std::string_view NSMetadataQueryGatheringProgressNotification =
    "NSMetadataQueryGatheringProgressNotification";

/// All results are visible; posted once for each start that is not stopped, after the last
/// progress.
inline constexpr std::string_view NSMetadataQueryDidFinishGatheringNotification =
    "NSMetadataQueryDidFinishGatheringNotification";

} // namespace searchsystem
