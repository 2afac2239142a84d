#pragma once

#include <chrono>
#include <cstdint>

/// The moment at which local clocks show `time`, in seconds since 1970-01-01 00:00 UTC.
///
/// A time that is skipped when clocks are set forward moves forward by as much; of a doubled time
/// it is the first. The zone is the one that the C library has taken from the environment. Any
/// thread.
[[nodiscard]] std::int64_t momentOfLocalTime(std::chrono::local_seconds time) noexcept;
