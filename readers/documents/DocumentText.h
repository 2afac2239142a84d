#pragma once

#include "readers/ByteSource.h"
#include "readers/ReadResult.h"
#include "readers/documents/CharacterMap.h"
#include "readers/documents/TextSink.h"

namespace searchsystem {

/// Reads the text that a PDF document shows, page by page, and hands it over in the form in which
/// it is compared: UTF-8 after compatibility normalisation (NFKC), not folded; one blank for any
/// white space and for line ends; no soft hyphens; U+0001 for a hyphen that ends a line, without
/// the line end behind it; U+000C behind each page.
///
/// What was shown before a fault is handed over in any case. `none` also where the sink has stopped
/// it. Throws nothing but `std::bad_alloc`.
[[nodiscard]] UnreadReason readDocumentText(ByteSource &source, const CharacterMaps &maps,
                                            TextSink &sink);

} // namespace searchsystem
