#include "pdf_reader/CParamArray.h"

#include "pdf_reader/LineUtility.h"

#include <functional>
#include <limits>
#include <memory>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::size_t mostCount = std::numeric_limits<std::uint32_t>::max();

const unsigned char *bytesOf(const char *buf) noexcept {
  return reinterpret_cast<const unsigned char *>(buf);
}

/// Calls `take` with where each token starts and how long it is.
template <class Take> void forEachToken(std::string_view line, Take take) {
  std::size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && classOf(line[i]) == ByteClass::trim)
      ++i;
    const std::size_t start = i;
    while (i < line.size() && classOf(line[i]) != ByteClass::trim)
      ++i;
    if (i > start)
      take(line.substr(start, i - start));
  }
}

} // namespace

bool CParamArray::grow(std::size_t count, std::size_t bytes) noexcept {
  if (count > mostCount - end_ || bytes > mostCount - textEnd_)
    return false;
  if (end_ + count > slots_.capacity() && begin_ > end_ / 2) {
    std::memmove(slots_.data(), slots_.data() + begin_, (end_ - begin_) * sizeof(Slot));
    end_ -= std::exchange(begin_, 0);
  }
  if (!slots_.reserve(end_ + count))
    return false;
  return textEnd_ + bytes <= texts_.capacity() || dropDeletedText(bytes) ||
         texts_.reserve(textEnd_ + bytes);
}

/// When at least half of the text belongs to no token any more, moves the rest to a block of its
/// own with room for `bytes` more; false otherwise.
bool CParamArray::dropDeletedText(std::size_t bytes) noexcept {
  std::size_t size = 0;
  for (std::uint32_t i = begin_; i < end_; ++i)
    size += slots_.data()[i].length + std::size_t{1};
  PlainArray<char> texts;
  if (size > textEnd_ / 2 || !texts.reserve(size + size / 2 + bytes))
    return false;
  std::uint32_t position = 0;
  for (std::uint32_t i = begin_; i < end_; ++i) {
    Slot &slot = slots_.data()[i];
    std::memcpy(texts.data() + position, texts_.data() + slot.offset, slot.length + std::size_t{1});
    slot.offset = position;
    position += slot.length + 1;
  }
  texts_ = std::move(texts);
  textEnd_ = position;
  return true;
}

/// Takes the tokens of the first line, or of the part of it that `getInfo` selects. False when
/// memory is short.
bool CParamArray::parseLine(const char *buf, unsigned long len, LineInfo *getInfo) noexcept {
  Reset();
  unsigned long start = 0;
  unsigned long length = 0;
  if (getInfo(bytesOf(buf), len, &start, &length) != 1)
    return true;
  const std::string_view line(buf + start, length);
  std::size_t count = 0;
  std::size_t bytes = 0;
  forEachToken(line, [&](std::string_view text) {
    ++count;
    bytes += text.size() + 1;
  });
  if (!makeRoom(count, bytes))
    return false;
  forEachToken(line, [this](std::string_view text) { appendInRoom(text); });
  return true;
}

int CParamArray::Parse(const char *buf, unsigned long len) noexcept {
  return parseLine(buf, len, GetLineInfo) && GetCount() > 0 ? 1 : 0;
}

int CParamArray::Parse_WithComment(const char *buf, unsigned long len) noexcept {
  return parseLine(buf, len, GetLineInfo_WithComment) && GetCount() > 0 ? 1 : 0;
}

int CParamArray::ParseObject(const char *buf, unsigned long len, const char *begin,
                             const char *end) noexcept {
  Reset();
  if (buf == nullptr || begin == nullptr || end == nullptr)
    return 0;
  bool hasBegun = false;
  bool hasEnded = false;
  CParamArray line;
  for (unsigned long position = 0; position < len && !hasEnded;) {
    unsigned long size = 0;
    GetLineSize(bytesOf(buf) + position, len - position, &size);
    if (!line.parseLine(buf + position, size, GetLineInfo)) {
      Release();
      return 0;
    }
    position += size + 1;

    unsigned long first = 0;
    unsigned long count = line.GetCount();
    for (unsigned long i = 0; i < count; ++i) {
      if (!hasBegun && line.Compare(i, begin) == 1) {
        hasBegun = true;
        first = i;
      } else if (hasBegun && line.Compare(i, end) == 1) {
        hasEnded = true;
        count = i + 1;
      }
    }
    for (unsigned long i = first; i < count; ++i)
      if (!append(line.token(i))) {
        Release();
        return 0;
      }
  }
  return 1;
}

bool CParamArray::appendText(const char *text) noexcept {
  const std::size_t length = std::strlen(text);
  const bool isOwn = !std::less<>()(text, texts_.data()) &&
                     std::less<>()(text, static_cast<const char *>(texts_.data()) + textEnd_);
  if (!isOwn)
    return append({text, length});
  // Growing may move the text, so copy it first.
  PlainArray<char> copy;
  if (!copy.reserve(length + 1))
    return false;
  std::memcpy(copy.data(), text, length);
  return append({copy.data(), length});
}

/// The text of a place without a token. A token without text begins with its NUL.
constexpr char emptyPlace = '\1';

/// Appends a place that holds no token.
bool CParamArray::appendPlace() noexcept {
  if (!append(""))
    return false;
  texts_.data()[textEnd_ - 1] = emptyPlace;
  return true;
}

bool CParamArray::isEmptyPlace(unsigned long index) const noexcept {
  const std::string_view text = token(index);
  return text.empty() && *text.data() == emptyPlace;
}

int CParamArray::AddParam(const char *text) noexcept {
  return text != nullptr && appendText(text) ? 1 : 0;
}

int CParamArray::AddParam(const CParamArray *other) noexcept {
  if (other == nullptr)
    return 0;
  const unsigned long count = other->GetCount();
  for (unsigned long i = 0; i < count; ++i) {
    // When the other is this array, growing may move the text.
    const std::size_t length = other->token(i).size();
    if (length == 0 || !makeRoom(1, length + 1))
      return 0;
    appendInRoom(other->token(i));
  }
  return 1;
}

int CParamArray::InsertParam(unsigned long index, const char *text) noexcept {
  if (text == nullptr || index > GetCount() || !appendText(text))
    return 0;
  Slot *const slots = slots_.data() + begin_;
  const unsigned long last = GetCount() - 1;
  const Slot inserted = slots[last];
  std::memmove(slots + index + 1, slots + index, (last - index) * sizeof(Slot));
  slots[index] = inserted;
  return 1;
}

int CParamArray::SetParam(unsigned long index, const char *text) noexcept {
  if (text == nullptr || index >= GetCount() || isEmptyPlace(index) || !appendText(text))
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
  std::memmove(slots + index, slots + index + n, (count - index - n) * sizeof(Slot));
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
  for (unsigned long i = start; i < start + count; ++i)
    if (!(src->token(i).empty() ? appendPlace() : append(src->token(i)))) {
      Release();
      return 0;
    }
  return 1;
}

unsigned long CParamArray::FindParam(const char *text, unsigned long from) const noexcept {
  if (text == nullptr || *text == '\0')
    return notFound;
  const std::string_view sought(text);
  for (unsigned long i = from; i < GetCount(); ++i)
    if (token(i) == sought)
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
  slots_.release();
  texts_.release();
  return 1;
}

} // namespace searchsystem
