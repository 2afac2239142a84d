#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileStatus.h"

#include <optional>

namespace searchsystem {

/// The status of the folder at `path`, relative to the open folder `folder`; none if that is no
/// folder or a link. `path` ends with a NUL. Any thread.
[[nodiscard]] std::optional<FileStatus> folderStatus(int folder, const char *path) noexcept;

/// Opens the folder at `path`, relative to the open folder `folder`, for calls that do not read it;
/// none on failure, and if it is a link. Any thread.
[[nodiscard]] FileDescriptor openToExamine(int folder, const char *path) noexcept;

/// Longer than a tick of any clock that stamps the changes of folders.
constexpr std::chrono::milliseconds longestTick{20};

} // namespace searchsystem
