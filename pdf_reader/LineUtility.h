#pragma once

#include "pdf_reader/ByteClasses.h"

#include <cstdint>

namespace searchsystem {

class CParamArray;

// Functions over bytes in memory. They answer 1 for success and 0 for failure, keep nothing, and
// change none of the bytes that they look at. Any thread.

[[nodiscard]] constexpr int IsCR(unsigned char byte) noexcept { return byte == '\r' ? 1 : 0; }
[[nodiscard]] constexpr int IsLF(unsigned char byte) noexcept { return byte == '\n' ? 1 : 0; }

/// Either byte, not the pair.
[[nodiscard]] constexpr int IsCRLF(unsigned char byte) noexcept {
  return classOf(byte) == ByteClass::lineEnd ? 1 : 0;
}

[[nodiscard]] constexpr int IsComment(unsigned char byte) noexcept {
  return classOf(byte) == ByteClass::comment ? 1 : 0;
}

/// NUL, tab and space. A form feed is none.
[[nodiscard]] constexpr int IsTrim(unsigned char byte) noexcept {
  return classOf(byte) == ByteClass::trim ? 1 : 0;
}

/// How many bytes stand before the first CR or LF, or `len`. 0 when a pointer is null.
int GetLineSize(const unsigned char *buf, unsigned long len, unsigned long *outSize) noexcept;

/// The first line without its comment and without trim bytes at both ends: where it begins and how
/// long it is. A doubled percent sign, and one at the end of the line, are text. Either result may
/// be null. 0 when `buf` is null.
int GetLineInfo(const unsigned char *buf, unsigned long len, unsigned long *outStart,
                unsigned long *outLength) noexcept;

/// The same with the comment.
int GetLineInfo_WithComment(const unsigned char *buf, unsigned long len, unsigned long *outStart,
                            unsigned long *outLength) noexcept;

/// A walk over the lines of a buffer, which has to live as long. It belongs to the caller, who ends
/// it with `FindLineClose`; the functions take and give it as the address of its first field.
struct tagFINDLINE {
  char *buffer;
  std::uint32_t length;
  std::uint32_t position;
  std::uint8_t reverse;
};

/// A walk from the first line on. Null when `buf` is null, for 4 GiB and more, or when memory is
/// short.
[[nodiscard]] char **FindLine(unsigned char *buf, unsigned long len) noexcept;

/// A walk from the last line back. Null as above.
[[nodiscard]] char **RevFindLine(unsigned char *buf, unsigned long len) noexcept;

/// Where the next line starts (`outStart` may be null); 0 when there is none. CR LF ends one line;
/// backwards an empty line starts at its line end, and the pair at the very beginning counts twice.
int FindNextLine(char **iter, unsigned long *outStart) noexcept;

/// Ends a walk; null is ignored.
void FindLineClose(char **iter) noexcept;

/// A word of a line, inside the buffer that was searched.
struct tagFINDINFO {
  unsigned char *word;
  std::uint32_t length;
};

/// The words of a line. The caller has to give it room for (len + 1) / 2 of them.
struct tagFINDINFOLIST {
  std::uint32_t count;
  tagFINDINFO words[1];
};

/// Fills the list with the words of the first line: what stands between NUL, tab, form feed and
/// space. Always 1; with a null argument nothing is written.
int ParseKeyWordItem(unsigned char *line, unsigned long len, tagFINDINFOLIST *list) noexcept;

/// Looks for a keyword as a whole word of the first line, outside its comment. `*out` receives
/// where the first one is, or null. 0 when an argument is null.
int FindKeyWordLineRev(unsigned char *line, unsigned long len, const unsigned char *keyword,
                       unsigned char **out) noexcept;

/// The same over many lines: the first occurrence in the last line that has one.
int FindKeyWordRev(unsigned char *buf, unsigned long len, const unsigned char *keyword,
                   unsigned char **out) noexcept;

/// Decodes a hexadecimal string object, ended by a NUL. Without `out`, `*ioSize` receives the size
/// that it takes with a NUL. With it, `*ioSize` is the room there and receives the bytes decoded;
/// the rest is zeros. 0 for null pointers and for any other token, literal strings among them.
int ConvertStringObjectToString(const unsigned char *token, unsigned char *out,
                                unsigned long *ioSize) noexcept;

/// How many tokens the array has that begins with the "[" at `index`, both brackets counted; 0 when
/// none begins there or it has no end.
int GetArrayLength(const CParamArray *tokens, int index) noexcept;

} // namespace searchsystem
