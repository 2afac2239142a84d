#pragma once

#include "readers/photographs/FieldCollector.h"
#include "readers/photographs/TIFFDirectory.h"

#include <bit>
#include <string>
#include <string_view>

namespace searchsystem {

/// Hands on the entry of a directory if it is a text that describes a photograph, its maker or
/// model, or its date. `order` is that of the structure.
void readExifText(const TIFFEntry &entry, std::endian order, FieldCollector &fields);

/// The text of a user comment, which says in its first eight bytes how it is encoded (Exif 2.32,
/// 4.6.5, UserComment). UTF-16 without a mark is in the order of the structure.
[[nodiscard]] std::string userCommentToUtf8(std::string_view bytes, std::endian order);

} // namespace searchsystem
