#pragma once

#include "platform/foundation/FileStatus.h"

#include <optional>

/// The status of the folder at `path`, relative to the open folder `folder`; none when there is
/// none, or only a link to one. `path` ends with a NUL. Any thread.
[[nodiscard]] std::optional<FileStatus> folderStatus(int folder, const char *path) noexcept;

/// More than a tick of any clock that marks the changes of folders.
constexpr std::chrono::milliseconds longestTick{20};
