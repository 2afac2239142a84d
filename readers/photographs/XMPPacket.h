#pragma once

#include "readers/photographs/PhotographReading.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace searchsystem {

/// Whether a packet stands in the photograph or in a file beside it.
enum class XMPPlace : std::uint8_t { file, sidecar };

/// Reads the texts and dates of an XMP packet (XMP standard, part 1, 7). A document type, and so
/// any entity of its own, ends it; what came before a fault counts. The time is linear in the
/// bytes.
///
/// Returns the name of the packet that continues it (part 3, 1.1.3.1), which is mostly empty.
std::string readXMPPacket(std::string_view packet, PhotographReading &reading, XMPPlace place);

} // namespace searchsystem
