#include "readers/documents/OpenTypeFont.h"

#include <algorithm>
#include <cstddef>

namespace searchsystem {

namespace {

constexpr std::uint32_t mostTables = 64;
/// Where fonts of symbols have their codes.
constexpr std::uint32_t symbolBase = 0xF000;

constexpr std::uint32_t tag(const char (&name)[5]) noexcept {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i)
    value = value << 8 | static_cast<unsigned char>(name[i]);
  return value;
}

} // namespace

OpenTypeFont::OpenTypeFont(std::string_view program) : program_(program) {
  std::size_t at = program_.longWord(0) == tag("ttcf") ? program_.longWord(12) : 0;
  const std::uint32_t count = std::min(program_.word(at + 4), mostTables);
  std::size_t characterTables = 0;
  at += 12;
  for (std::uint32_t i = 0; i < count; ++i, at += 16) {
    const std::size_t offset = program_.longWord(at + 8);
    if (program_.longWord(at) == tag("cmap"))
      characterTables = offset;
    else if (program_.longWord(at) == tag("CFF "))
      compactFont_ = program_.part(offset, program_.longWord(at + 12));
  }
  if (characterTables != 0)
    readCharacterTables(characterTables);
}

void OpenTypeFont::readCharacterTables(std::size_t table) {
  const std::uint32_t count = std::min(program_.word(table + 2), mostTables);
  std::size_t unicode = 0, symbols = 0, macintosh = 0;
  std::uint32_t bestRank = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t entry = table + 4 + std::size_t{i} * 8;
    const std::uint32_t platform = program_.word(entry);
    const std::uint32_t encoding = program_.word(entry + 2);
    const std::size_t at = table + program_.longWord(entry + 4);
    if (platform == 3 && encoding == 0)
      symbols = at;
    else if (platform == 1 && encoding == 0)
      macintosh = at;
    // The larger table of two; variation sequences (format 14) are none.
    const bool isUnicode = platform == 0 || (platform == 3 && (encoding == 1 || encoding == 10));
    const std::uint32_t rank = program_.word(at) == 12 ? 2 : 1;
    if (isUnicode && program_.word(at) != 14 && rank > bestRank) {
      unicode = at;
      bestRank = rank;
    }
  }
  if (symbols != 0) {
    const std::vector<Mapping> mappings = readMappings(symbols);
    addCodes(mappings, symbolBase);
    addCodes(mappings, 0);
  }
  if (macintosh != 0)
    addCodes(readMappings(macintosh), 0);
  if (unicode != 0)
    readCharacters(unicode);
}

void OpenTypeFont::addCodes(const std::vector<Mapping> &mappings, std::uint32_t base) noexcept {
  for (const Mapping &mapping : mappings)
    if (mapping.code - base < glyphOfCode_.size() && glyphOfCode_[mapping.code - base] == 0)
      glyphOfCode_[mapping.code - base] = mapping.glyph;
}

void OpenTypeFont::readCharacters(std::size_t table) {
  for (const Mapping &mapping : readMappings(table)) {
    if (mapping.glyph > 0xFFFF || mapping.glyph == 0)
      continue;
    if (mapping.code > 0xFFFF) {
      otherCharacters_.push_back(mapping);
      continue;
    }
    if (mapping.glyph >= characters_.size())
      characters_.resize(mapping.glyph + std::size_t{1});
    // Of the characters with the same glyph the first one, rather than one for private use.
    char16_t &character = characters_[mapping.glyph];
    if (character == 0)
      character = static_cast<char16_t>(mapping.code);
  }
  std::stable_sort(otherCharacters_.begin(), otherCharacters_.end(),
                   [](const Mapping &a, const Mapping &b) { return a.glyph < b.glyph; });
}

std::vector<OpenTypeFont::Mapping> OpenTypeFont::readMappings(std::size_t table) const {
  std::vector<Mapping> mappings;
  switch (program_.word(table)) {
  case 0:
    for (std::uint32_t code = 0; code < 256; ++code)
      if (const std::uint32_t glyph = program_.byte(table + 6 + code))
        mappings.push_back({code, glyph});
    break;
  case 4:
    return readSegments(table);
  case 6: {
    const std::uint32_t first = program_.word(table + 6);
    const std::uint32_t count = program_.word(table + 8);
    for (std::uint32_t i = 0; i < count; ++i)
      if (const std::uint32_t glyph = program_.word(table + 10 + std::size_t{i} * 2))
        mappings.push_back({first + i, glyph});
    break;
  }
  case 12: {
    const std::size_t count =
        std::min<std::size_t>(program_.longWord(table + 12), program_.size() / 12);
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t group = table + 16 + i * 12;
      const std::uint32_t first = program_.longWord(group);
      const std::uint32_t last = std::min(program_.longWord(group + 4), 0x10FFFFU);
      const std::uint32_t glyph = program_.longWord(group + 8);
      for (std::uint32_t code = first; code <= last && !isFull(mappings); ++code)
        mappings.push_back({code, glyph + (code - first)});
    }
    break;
  }
  default:
    break;
  }
  return mappings;
}

std::vector<OpenTypeFont::Mapping> OpenTypeFont::readSegments(std::size_t table) const {
  std::vector<Mapping> mappings;
  const std::size_t doubledCount = program_.word(table + 6) & ~1U;
  const std::size_t ends = table + 14;
  const std::size_t starts = ends + doubledCount + 2;
  const std::size_t deltas = starts + doubledCount;
  const std::size_t offsets = deltas + doubledCount;
  for (std::size_t i = 0; i < doubledCount; i += 2) {
    const std::uint32_t last = program_.word(ends + i);
    const std::uint32_t first = program_.word(starts + i);
    const std::uint32_t delta = program_.word(deltas + i);
    const std::uint32_t offset = program_.word(offsets + i);
    for (std::uint32_t code = first; code <= last && !isFull(mappings); ++code) {
      std::uint32_t glyph = code;
      if (offset != 0)
        glyph = program_.word(offsets + i + offset + std::size_t{code - first} * 2);
      if (offset == 0 || glyph != 0)
        glyph = (glyph + delta) & 0xFFFF;
      if (glyph != 0)
        mappings.push_back({code, glyph});
    }
  }
  return mappings;
}

char32_t OpenTypeFont::characterOf(std::uint32_t glyph) const noexcept {
  if (glyph < characters_.size() && characters_[glyph] != 0)
    return characters_[glyph];
  const auto found = std::lower_bound(
      otherCharacters_.begin(), otherCharacters_.end(), glyph,
      [](const Mapping &mapping, std::uint32_t value) { return mapping.glyph < value; });
  return found != otherCharacters_.end() && found->glyph == glyph ? found->code : 0;
}

} // namespace searchsystem
