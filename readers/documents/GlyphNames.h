#pragma once

#include <string>
#include <string_view>

namespace searchsystem {

/// Appends what a glyph of this name shows, after the conventions for glyph names and the Adobe
/// Glyph List: `eacute`, `f_i`, `uni00E9`, `u1F600`, `a.alt`. Small capitals and old style figures
/// are the letters and figures they stand for. Nothing for any other name (`g12`).
void appendGlyphName(std::string &text, std::string_view name);

/// Lines of names and code points, sorted by name, each with a line end before and behind it.
extern const std::string_view glyphList;

} // namespace searchsystem
