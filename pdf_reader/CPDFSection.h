#pragma once

#include "pdf_reader/CParamArray.h"
#include "pdf_reader/TokenReader.h"
#include "streams/CIOStream.h"

#include <optional>
#include <string_view>

namespace searchsystem {

/// Base of the parsers of a document's sections: `Parse` reads lines from the stream's position on
/// and hands their tokens to `ParseLine`, until that ends the parse.
///
/// The operations return 1 for success and 0 for failure; a section keeps what it read before a
/// failure. Ownership: a section owns what it read, never the stream. Never delete one through a
/// pointer to this base. Threads: one at a time.
class CPDFSection {
public:
  CPDFSection() noexcept = default;
  ~CPDFSection() = default;
  CPDFSection(const CPDFSection &) = delete;
  CPDFSection &operator=(const CPDFSection &) = delete;

  /// Consumes tokens from the front of the array; the others come back, followed by the next
  /// line's. Sets `*goOn` to 0 when the section is complete. The base skips an object, up to
  /// "endobj".
  virtual int ParseLine(CParamArray *tokens, char *goOn, void *context);

  /// Forgets earlier results and reads from the stream's position on. Leaves the stream at the end
  /// of the last block of 1,024 bytes.
  virtual int Parse(CIOStream *stream);

  /// Returns the section to its initial state. Always 1.
  virtual int Release();

  /// Forgets what was read. Always 1.
  virtual int ReleaseParse();

  /// Looks for a keyword in the `length` bytes from the stream's position on, backwards in blocks.
  /// `*found` receives its offset from that position, or -1. 0 if a pointer is null or the stream
  /// fails, as it does if less than half a block is left.
  static int FindKeyWordRev(CIOStream *stream, long length, const unsigned char *keyword,
                            long *found);

  /// Like `Parse`, but throws `std::bad_alloc` if memory is short.
  virtual int read(CIOStream &stream);

  /// Later parses end at `position` if the stream is longer.
  static constexpr long noEnd = TokenReader::noEnd;
  void EndAt(long position) noexcept { endAt_ = position; }

  /// The end of the last line that the last parse read.
  [[nodiscard]] long parsedTo() const noexcept { return parsedTo_; }

  /// A result of `take` in `walkObject`: ends the walk with 0.
  static constexpr unsigned long failed = static_cast<unsigned long>(-1);

protected:
  /// Walks over an object, from "obj" to "endobj". For each other token in it, `take(index)`
  /// returns the number of tokens it used: none if the value of a key is yet to come.
  template <class Take> int walkObject(CParamArray &tokens, char &goOn, Take take) {
    unsigned long i = 0;
    unsigned long used = 1;
    bool isEnd = false;
    while (i < tokens.GetCount() && used > 0 && !isEnd) {
      const std::string_view token = tokens.token(i);
      used = 1;
      if (!isInside_)
        isInside_ = token == "obj";
      else if (token == "endobj")
        isEnd = true;
      else
        used = take(i);
      if (used == failed)
        break;
      i += used;
    }
    tokens.dropFront(i);
    if (isEnd) {
      isInside_ = false;
      goOn = 0;
    }
    return used == failed ? 0 : 1;
  }

  /// `ParseLine` without null pointers. Throws `std::bad_alloc`.
  virtual int takeTokens(CParamArray &tokens, char &goOn);

  /// Hands `tokens_` to `ParseLine`. Throws `std::bad_alloc` if that fails for lack of memory.
  int handOver(char &goOn);

  /// `FindKeyWordRev` without null pointers. Throws `std::bad_alloc`.
  static int findBackwards(CIOStream &stream, long length, const unsigned char *keyword,
                           long &found);

  /// Whether the section's first word was read: "obj" in most sections.
  bool isInside_ = false;

  /// Which lines matter to `ParseLine`; by default all.
  std::optional<TokenReader::Marks> marks_;

  /// Whether comments are read as tokens.
  TokenReader::Comments comments_ = TokenReader::Comments::cut;

  /// The tokens that wait for `ParseLine`, kept to reuse their memory.
  CParamArray tokens_;

private:
  long parsedTo_ = 0;
  long endAt_ = noEnd;
  /// Whether `ParseLine` has failed for lack of memory.
  bool isMemoryShort_ = false;
};

} // namespace searchsystem
