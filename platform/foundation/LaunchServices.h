#pragma once

#include "platform/foundation/FileItem.h"

#include <cstdint>
#include <optional>

namespace searchsystem {

/// The kinds of an item.
enum LSItemInfoFlags : std::uint32_t {
  kLSItemInfoIsAliasFile = 0x10,
  kLSItemInfoIsSymlink = 0x20,
  kLSItemInfoIsVolume = 0x1000,
};

/// The flags of the item itself; none if it cannot be examined. An alias file is a Mac bookmark,
/// a volume the root of a mounted file system. Any thread.
[[nodiscard]] std::optional<std::uint32_t> LSCopyItemInfo(FileItem &item) noexcept;

} // namespace searchsystem
