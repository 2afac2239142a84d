#pragma once

#include <cstdint>

namespace searchsystem {

/// The selector of the system version: "sysv".
inline constexpr std::uint32_t gestaltSystemVersion = 0x73797376;

/// Stores the value of `selector` and returns 0; -5551, and nothing stored, if it is unknown.
/// System versions above 0x1040 have a metadata index. Any thread.
int Gestalt(std::uint32_t selector, std::int32_t *response) noexcept;

/// Sets the system version; 0 restores the real one. Any thread.
void setSystemVersionForTesting(std::int32_t version) noexcept;

} // namespace searchsystem
