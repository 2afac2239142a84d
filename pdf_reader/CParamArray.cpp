#include "pdf_reader/CParamArray.h"

#include "pdf_reader/LineUtility.h"
#include "streams/ZeroWithoutMemory.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace searchsystem {

namespace {

/// Stands in place of the NUL where `CopyParam` found no text.
constexpr char emptyPlace = '\1';

const unsigned char *bytesOf(const char *buf) noexcept {
  return reinterpret_cast<const unsigned char *>(buf);
}

/// Calls `take` with each token of the first line, or of the part of it that `getInfo` selects.
template <class Take>
void forEachToken(const char *buf, unsigned long len, decltype(GetLineInfo) *getInfo, Take take) {
  unsigned long start = 0;
  unsigned long length = 0;
  if (getInfo(bytesOf(buf), len, &start, &length) == 1)
    forEachWord(
        {buf + start, length}, [](char c) { return classOf(c) == ByteClass::trim; }, take);
}

/// 1 if `work` succeeds; otherwise 0, and the array is released.
template <class Work> int succeedOrRelease(CParamArray &array, const Work &work) noexcept {
  const int result = zeroWithoutMemory([&] { return work() ? 1 : 0; });
  if (result != 1)
    array.Release();
  return result;
}

} // namespace

void CParamArray::grow(std::size_t count, std::size_t bytes) {
  constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max();
  if (count > most - end_ || bytes > most - textEnd_)
    throw std::bad_alloc();
  std::size_t size = 0;
  for (std::uint32_t i = begin_; i < end_; ++i)
    size += slots_.data()[i].length + std::size_t{1};
  if (size < textEnd_ / 2) {
    // Most of the text belongs to no token any more.
    PlainArray<char> texts;
    texts.reserve(size + size / 2 + bytes);
    textEnd_ = 0;
    for (std::uint32_t i = begin_; i < end_; ++i) {
      const auto [offset, length] = slots_.data()[i];
      std::memcpy(texts.data() + textEnd_, texts_.data() + offset, length + std::size_t{1});
      slots_.data()[i - begin_] = {textEnd_, length};
      textEnd_ += length + 1;
    }
    texts_ = std::move(texts);
    end_ -= std::exchange(begin_, 0);
  }
  slots_.reserve(end_ + count);
  texts_.reserve(textEnd_ + bytes);
}

int CParamArray::parseLine(const char *buf, unsigned long len, LineInfo *getInfo) noexcept {
  Reset();
  return succeedOrRelease(*this, [&] {
    forEachToken(buf, len, getInfo, [this](std::string_view token) { return append(token), true; });
    return GetCount() > 0;
  });
}

int CParamArray::Parse(const char *buf, unsigned long len) noexcept {
  return parseLine(buf, len, GetLineInfo);
}

int CParamArray::Parse_WithComment(const char *buf, unsigned long len) noexcept {
  return parseLine(buf, len, GetLineInfo_WithComment);
}

int CParamArray::ParseObject(const char *buf, unsigned long len, const char *begin,
                             const char *end) noexcept {
  Reset();
  if (buf == nullptr || begin == nullptr || end == nullptr)
    return 0;
  return succeedOrRelease(*this, [&] {
    bool hasBegun = false;
    bool hasEnded = false;
    unsigned long size = 0;
    for (unsigned long position = 0; position < len && !hasEnded; position += size + 1) {
      GetLineSize(bytesOf(buf) + position, len - position, &size);
      const unsigned long first = GetCount();
      forEachToken(buf + position, size, GetLineInfo, [&](std::string_view token) {
        append(token);
        hasEnded = hasBegun && token == end;
        if (!hasBegun && token == begin) {
          hasBegun = true;
          DeleteParam(first, GetCount() - 1 - first);
        }
        return !hasEnded;
      });
    }
    return true;
  });
}

int CParamArray::AddParam(const char *text) noexcept {
  if (text == nullptr)
    return 0;
  return zeroWithoutMemory([&] {
    // The copy is for texts of the array, which move as it grows.
    append(std::string(text));
    return 1;
  });
}

int CParamArray::AddParam(const CParamArray *other) noexcept {
  if (other == nullptr)
    return 0;
  const unsigned long count = other->GetCount();
  unsigned long i = 0;
  while (i < count && AddParam(other->GetParam(i)) == 1)
    ++i;
  return i == count ? 1 : 0;
}

int CParamArray::InsertParam(unsigned long index, const char *text) noexcept {
  if (index > GetCount() || AddParam(text) != 1)
    return 0;
  Slot *const end = slots_.data() + end_;
  std::rotate(slots_.data() + begin_ + index, end - 1, end);
  return 1;
}

int CParamArray::SetParam(unsigned long index, const char *text) noexcept {
  const bool isPlace =
      index < GetCount() && token(index).empty() && *token(index).data() == emptyPlace;
  if (index >= GetCount() || isPlace || AddParam(text) != 1)
    return 0;
  --end_;
  slots_.data()[begin_ + index] = slots_.data()[end_];
  return 1;
}

int CParamArray::DeleteParam(unsigned long index, unsigned long n) noexcept {
  const unsigned long count = GetCount();
  if (index >= count)
    return 0;
  n = std::min(n, count - index);
  if (index == 0) {
    dropFront(n);
    return 1;
  }
  Slot *const slots = slots_.data() + begin_;
  std::copy(slots + index + n, slots + count, slots + index);
  end_ -= static_cast<std::uint32_t>(n);
  return 1;
}

int CParamArray::CopyParam(const CParamArray *src, unsigned long start, int n) noexcept {
  Reset();
  if (n == 0)
    return 1;
  if (src == nullptr || start >= src->GetCount())
    return 0;
  unsigned long count = src->GetCount() - start;
  if (n > 0)
    count = std::min(count, static_cast<unsigned long>(n));
  return succeedOrRelease(*this, [&] {
    for (unsigned long i = start; i < start + count; ++i) {
      append(src->token(i));
      if (src->token(i).empty())
        texts_.data()[textEnd_ - 1] = emptyPlace;
    }
    return true;
  });
}

unsigned long CParamArray::FindParam(const char *text, unsigned long from) const noexcept {
  for (unsigned long i = from; i < GetCount(); ++i)
    if (Compare(i, text) == 1)
      return i;
  return notFound;
}

int CParamArray::Compare(unsigned long index, const char *text) const noexcept {
  return Compare(GetParam(index), text);
}

int CParamArray::Compare(const char *a, const char *b) noexcept {
  return a != nullptr && b != nullptr && std::strcmp(a, b) == 0 ? 1 : 0;
}

const char *CParamArray::GetParam(unsigned long index) const noexcept {
  return index < GetCount() && !token(index).empty() ? token(index).data() : nullptr;
}

int CParamArray::Reset() noexcept {
  begin_ = end_ = textEnd_ = 0;
  return 1;
}

int CParamArray::Release() noexcept {
  Reset();
  slots_ = {};
  texts_ = {};
  return 1;
}

} // namespace searchsystem
