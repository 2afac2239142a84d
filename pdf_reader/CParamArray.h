#pragma once

#include "pdf_reader/PlainArray.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace searchsystem {

/// The tokens of one line of a document, or of several. A token is what stands between NUL, tab and
/// space; brackets and the like are no separators.
///
/// Ownership: owns the texts; a text that is passed in may be one of them. They share
/// one block, each ended by a NUL, so that a token costs no allocation. Threads: one at a time.
/// Failure: the operations answer 1 for success and 0 for failure. When memory is short (or 4 GiB
/// of text are reached), `Parse`, `ParseObject` and `CopyParam` leave the array empty, the others
/// as it was.
class CParamArray {
public:
  static constexpr unsigned long notFound = static_cast<unsigned long>(-1);

  CParamArray() noexcept = default;
  ~CParamArray() = default;
  CParamArray(const CParamArray &) = delete;
  CParamArray &operator=(const CParamArray &) = delete;

  /// Takes the tokens of the first line of `buf`, without its comment. 0 when there are none.
  int Parse(const char *buf, unsigned long len) noexcept;

  /// The same, with a comment's tokens.
  int Parse_WithComment(const char *buf, unsigned long len) noexcept;

  /// Takes the tokens of all lines up to the first `end` that follows a `begin`. In the line of
  /// `begin` the tokens before it are left out, in that of `end` those after it. 0 when a pointer
  /// is null.
  int ParseObject(const char *buf, unsigned long len, const char *begin, const char *end) noexcept;

  /// Appends a token. 0 also when `text` is null.
  int AddParam(const char *text) noexcept;

  /// Appends the tokens of another array, up to one without text. 0 also when there is one, or the
  /// array is null.
  int AddParam(const CParamArray *other) noexcept;

  /// Inserts a token before that at `index`, or behind the last. 0 also when `text` is null or
  /// `index` is beyond the count.
  int InsertParam(unsigned long index, const char *text) noexcept;

  /// Replaces a token. 0 also when `text` is null, there is no token at `index`, or `CopyParam`
  /// left its place empty.
  int SetParam(unsigned long index, const char *text) noexcept;

  /// Deletes `n` tokens, or all that there are from `index` on. 0 when there is none at `index`.
  int DeleteParam(unsigned long index, unsigned long n) noexcept;

  /// Takes `n` tokens of another array, all from `start` on when `n` is negative or too many. The
  /// place of a token without text stays empty. 0 when `src` is null or has no token at `start`;
  /// the array is empty then.
  int CopyParam(const CParamArray *src, unsigned long start, int n) noexcept;

  /// The index of the first token at or after `from` that equals `text`, or `notFound`. A token
  /// without text equals nothing.
  unsigned long FindParam(const char *text, unsigned long from) const noexcept;

  /// Whether there is a token with text at `index` and it equals `text`: 1 or 0.
  int Compare(unsigned long index, const char *text) const noexcept;
  template <std::integral Index> int Compare(Index index, const char *text) const noexcept {
    return Compare(static_cast<unsigned long>(index), text);
  }

  /// Whether two texts are equal, and neither is null: 1 or 0.
  static int Compare(const char *a, const char *b) noexcept;

  [[nodiscard]] unsigned long GetCount() const noexcept { return end_ - begin_; }

  /// A token's text, valid until the next change; null when there is no token at `index`, and for
  /// one without text.
  [[nodiscard]] const char *GetParam(unsigned long index) const noexcept;

  /// Deletes all tokens and keeps the room for others. Always 1.
  int Reset() noexcept;

  /// Deletes all tokens and frees everything. Always 1.
  int Release() noexcept;

  /// The text of the token at `index`, which must be below the count.
  [[nodiscard]] std::string_view token(unsigned long index) const noexcept {
    const Slot &slot = slots_.data()[begin_ + index];
    return {texts_.data() + slot.offset, slot.length};
  }

  /// Appends a token that may hold anything but NUL. Throws `std::bad_alloc`.
  void append(std::string_view text) {
    makeRoom(1, text.size() + 1);
    appendInRoom(text);
  }

  /// Makes room for `count` tokens with `bytes` bytes of text in all, NULs included. Throws
  /// `std::bad_alloc`.
  void makeRoom(std::size_t count, std::size_t bytes) {
    if (end_ + count > slots_.capacity() || textEnd_ + bytes > texts_.capacity())
      grow(count, bytes);
  }

  /// Appends a token for which room was made.
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
