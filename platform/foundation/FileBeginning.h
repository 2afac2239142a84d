#pragma once

#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/Ref.h"

#include <cstddef>

/// The first bytes of a file, read once: as many as its size tells, but `longest` at most. The size
/// is the item's own; of a link to a file it is that of the link.
///
/// Null when the item is no regular file and no link to one, is empty, cannot be opened or read, or
/// memory is short. Any thread.
[[nodiscard]] Ref<const NSData> beginningOfFile(FileItem &item, std::size_t longest) noexcept;
