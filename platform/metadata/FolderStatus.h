#pragma once

#include "platform/foundation/FileStatus.h"

#include <optional>

/// The status of the folder at `path`, relative to the open folder `folder`; none when there is
/// none, or only a link to one. `path` ends with a NUL. Any thread.
[[nodiscard]] std::optional<FileStatus> folderStatus(int folder, const char *path) noexcept;

/// Whether a folder that is listed after `begin`, and was last changed at `changeTime` before that,
/// will bear another moment once it changes again. Moments come from a clock that ticks slowly, so
/// that two changes within one tick look the same. `begin` is a moment of this system's clock,
/// `changeTime` may be anything.
[[nodiscard]] bool isSettled(FileMoment changeTime, FileMoment begin) noexcept;
