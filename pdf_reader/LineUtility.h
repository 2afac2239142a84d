#pragma once

#include "pdf_reader/ByteClasses.h"

#include <cstdint>

namespace searchsystem {

class CParamArray;

// Functions over bytes in memory. They return 1 for success and 0 for failure, keep nothing, and do
// not change the bytes. Any thread.

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

/// `*outSize` receives the number of bytes before the first CR or LF, or `len`. 0 if a pointer is
/// null.
int GetLineSize(const unsigned char *buf, unsigned long len, unsigned long *outSize) noexcept;

/// Offset and length of the first line without its comment and without trim bytes at both ends. A
/// doubled percent sign, and one at the end of the line, are text. Either pointer to a result may
/// be null. 0 if `buf` is null.
int GetLineInfo(const unsigned char *buf, unsigned long len, unsigned long *outStart,
                unsigned long *outLength) noexcept;

/// The same with the comment.
int GetLineInfo_WithComment(const unsigned char *buf, unsigned long len, unsigned long *outStart,
                            unsigned long *outLength) noexcept;

/// A walk over the lines of a buffer, which must live as long. It belongs to the caller, who ends
/// it with `FindLineClose`. The functions take and return the address of its first field.
struct tagFINDLINE {
  char *buffer;
  std::uint32_t length;
  std::uint32_t position;
  std::uint8_t reverse;
};

/// A walk from the first line on. Null if `buf` is null, for 4 GiB and more, or if memory is short.
[[nodiscard]] char **FindLine(unsigned char *buf, unsigned long len) noexcept;

/// A walk from the last line back. Null as above.
[[nodiscard]] char **RevFindLine(unsigned char *buf, unsigned long len) noexcept;

/// The offset of the next line (`outStart` may be null); 0 if there is none. CR LF ends one line;
/// backwards, an empty line starts at its line end, and the pair at offset 0 counts twice.
int FindNextLine(char **iter, unsigned long *outStart) noexcept;

/// Ends a walk; null is ignored.
void FindLineClose(char **iter) noexcept;

/// A word of a line, inside the buffer that was searched.
struct tagFINDINFO {
  unsigned char *word;
  std::uint32_t length;
};

/// The words of a line, with room from the caller for (len + 1) / 2 of them.
struct tagFINDINFOLIST {
  std::uint32_t count;
  tagFINDINFO words[1];
};

/// Fills the list with the words of the first line, which NUL, tab, form feed and space separate.
/// Always 1; a null argument writes nothing.
int ParseKeyWordItem(unsigned char *line, unsigned long len, tagFINDINFOLIST *list) noexcept;

/// Looks for a keyword as a whole word of the first line, before its comment. `*out` receives the
/// first occurrence, or null. 0 if an argument is null.
int FindKeyWordLineRev(unsigned char *line, unsigned long len, const unsigned char *keyword,
                       unsigned char **out) noexcept;

/// The same over many lines: the first occurrence in the last line that has one.
int FindKeyWordRev(unsigned char *buf, unsigned long len, const unsigned char *keyword,
                   unsigned char **out) noexcept;

/// Decodes a hexadecimal string object that a NUL ends. Without `out`, `*ioSize` receives the
/// decoded size and one for a NUL. With it, `*ioSize` is the size of `out` and receives the number
/// of bytes decoded; the rest is zeros. 0 for null pointers and any other token, even a literal
/// string.
int ConvertStringObjectToString(const unsigned char *token, unsigned char *out,
                                unsigned long *ioSize) noexcept;

/// The number of tokens of the array that begins with the "[" at `index`, both brackets included; 0
/// if none begins there or it has no end.
int GetArrayLength(const CParamArray *tokens, int index) noexcept;

} // namespace searchsystem
