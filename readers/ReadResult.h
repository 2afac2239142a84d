#pragma once

#include <cstdint>

namespace searchsystem {

/// Why a file was not read, or `none`. The values go over the protocol.
enum class UnreadReason : std::uint8_t {
  none,
  needsPassword,
  damaged,
  noText,
  tooLarge,
  tookTooLong,
  readerCrashed,
  cannotBeOpened,
  noReader,
};

} // namespace searchsystem
