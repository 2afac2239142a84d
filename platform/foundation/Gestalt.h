#pragma once

#include <cstdint>

/// The selector of the system version: "sysv".
inline constexpr std::uint32_t gestaltSystemVersion = 0x73797376;

/// Stores the fact that `selector` names and answers 0; -5551 when the selector is unknown, and
/// then nothing is stored. The system version tells whether there is a metadata index: a system
/// with one is later than 0x1040. Any thread.
int Gestalt(std::uint32_t selector, std::int32_t *response) noexcept;

/// Makes the system version `version`; 0 restores the real one. Any thread.
void setSystemVersionForTesting(std::int32_t version) noexcept;
