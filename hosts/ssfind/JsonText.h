#pragma once

#include <string>
#include <string_view>

namespace searchsystem::ssfind {

/// Appends a name as JSON: a string, in which control characters are escaped, or for a name that
/// is not UTF-8 the object {"bytes":"..."} with its bytes in base64.
void appendJsonName(std::string &out, std::string_view name);

/// RFC 4648, with padding.
void appendBase64(std::string &out, std::string_view bytes);

} // namespace searchsystem::ssfind
