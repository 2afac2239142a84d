#pragma once

#include "pdf_reader/PlainArray.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace searchsystem {

/// The tokens of one line of a document, or of several. Only NUL, tab and space separate tokens,
/// not brackets.
///
/// Ownership: owns the texts, which share one block, so that a token costs no allocation. Copies
/// its arguments, which may be texts of its own. Threads: one at a time. Failure: the operations
/// return 1 for success and 0 for failure. If memory is short (or there are 4 GiB of text),
/// `Parse`, `ParseObject` and `CopyParam` leave the array empty, the others as it was.
class CParamArray {
public:
  static constexpr unsigned long notFound = static_cast<unsigned long>(-1);

  CParamArray() noexcept = default;
  ~CParamArray() = default;
  CParamArray(const CParamArray &) = delete;
  CParamArray &operator=(const CParamArray &) = delete;

  /// Takes the tokens of the first line of `buf`, without its comment. 0 if there are none.
  int Parse(const char *buf, unsigned long len) noexcept;

  /// The same, with a comment's tokens.
  int Parse_WithComment(const char *buf, unsigned long len) noexcept;

  /// Takes the tokens of all lines up to the first `end` after a `begin`. Leaves out the tokens
  /// before `begin` in its line, and those after `end`. 0 if a pointer is null.
  int ParseObject(const char *buf, unsigned long len, const char *begin, const char *end) noexcept;

  /// Appends a token. 0 also if `text` is null.
  int AddParam(const char *text) noexcept;

  /// Appends the tokens of another array. 0 also if the array is null, or at the first token
  /// without text.
  int AddParam(const CParamArray *other) noexcept;

  /// Inserts a token at `index`. 0 also if `text` is null or `index` is beyond the count.
  int InsertParam(unsigned long index, const char *text) noexcept;

  /// Replaces a token. 0 also if `text` is null, `index` is not below the count, or `CopyParam`
  /// left the place empty.
  int SetParam(unsigned long index, const char *text) noexcept;

  /// Deletes `n` tokens from `index` on, or as many as there are. 0 if there is none.
  int DeleteParam(unsigned long index, unsigned long n) noexcept;

  /// Takes `n` tokens of another array from `start` on; all of them if `n` is negative or too
  /// large. The place of a token without text stays empty. 0, and the array is empty, if `src` is
  /// null or has no token at `start`.
  int CopyParam(const CParamArray *src, unsigned long start, int n) noexcept;

  /// The index of the first token from `from` on that equals `text`, or `notFound`. A token without
  /// text equals nothing.
  unsigned long FindParam(const char *text, unsigned long from) const noexcept;

  /// Whether the token at `index` exists, has text, and equals `text`: 1 or 0.
  int Compare(unsigned long index, const char *text) const noexcept;
  template <std::integral Index> int Compare(Index index, const char *text) const noexcept {
    return Compare(static_cast<unsigned long>(index), text);
  }

  /// Whether two texts are equal, and neither is null: 1 or 0.
  static int Compare(const char *a, const char *b) noexcept;

  [[nodiscard]] unsigned long GetCount() const noexcept { return end_ - begin_; }

  /// A token's text, valid until the next change; null for a token without text, and if `index` is
  /// not below the count.
  [[nodiscard]] const char *GetParam(unsigned long index) const noexcept;

  /// Deletes all tokens and keeps the memory. Always 1.
  int Reset() noexcept;

  /// Deletes all tokens and frees the memory. Always 1.
  int Release() noexcept;

  /// The text of the token at `index`, which must be below the count.
  [[nodiscard]] std::string_view token(unsigned long index) const noexcept {
    const Slot &slot = slots_.data()[begin_ + index];
    return {texts_.data() + slot.offset, slot.length};
  }

  /// Appends a token, which must not contain NUL. Throws `std::bad_alloc`.
  void append(std::string_view text) {
    makeRoom(1, text.size() + 1);
    appendInRoom(text);
  }

  /// Makes room for `count` tokens with a total of `bytes` bytes, NULs included. Throws
  /// `std::bad_alloc`.
  void makeRoom(std::size_t count, std::size_t bytes) {
    if (end_ + count > slots_.capacity() || textEnd_ + bytes > texts_.capacity())
      grow(count, bytes);
  }

  /// Appends a token that has room.
  void appendInRoom(std::string_view text) noexcept {
    std::memcpy(texts_.data() + textEnd_, text.data(), text.size());
    slots_.data()[end_++] = {textEnd_, static_cast<std::uint32_t>(text.size())};
    textEnd_ += static_cast<std::uint32_t>(text.size());
    texts_.data()[textEnd_++] = '\0';
  }

  /// Deletes the first `n` tokens, which must exist.
  void dropFront(unsigned long n) noexcept {
    begin_ += static_cast<std::uint32_t>(n);
    if (begin_ == end_)
      begin_ = end_ = textEnd_ = 0;
  }

private:
  struct Slot {
    std::uint32_t offset;
    std::uint32_t length;
  };

  void grow(std::size_t count, std::size_t bytes);
  using LineInfo = int(const unsigned char *buf, unsigned long len, unsigned long *outStart,
                       unsigned long *outLength) noexcept;
  int parseLine(const char *buf, unsigned long len, LineInfo *getInfo) noexcept;

  PlainArray<Slot> slots_;
  PlainArray<char> texts_;
  std::uint32_t begin_ = 0;
  std::uint32_t end_ = 0;
  std::uint32_t textEnd_ = 0;
};

} // namespace searchsystem
