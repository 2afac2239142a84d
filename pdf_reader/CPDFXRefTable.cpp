#include "pdf_reader/CPDFXRefTable.h"

#include "streams/ZeroWithoutMemory.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace searchsystem {

int CPDFXRefTable::takeTokens(CParamArray &tokens, char &goOn) {
  while (tokens.GetCount() > 0) {
    if (!isInside_) {
      isInside_ = tokens.token(0) == "xref";
      tokens.dropFront(1);
    } else if (expectsHeader_) {
      if (tokens.GetCount() != 2)
        return 1;
      const std::int32_t first = numberOf(tokens.token(0));
      const std::int32_t count = numberOf(tokens.token(1));
      if (count == 0 || first < 0 || first >= size_) {
        goOn = 0;
        return 1;
      }
      nextNumber_ = first;
      endNumber_ = std::int64_t{first} + count;
      expectsHeader_ = false;
      tokens.dropFront(2);
    } else {
      if (tokens.GetCount() < 3)
        return 1;
      if (!set({nextNumber_, offsetOf(tokens.token(0)), generationOf(tokens.token(1))}))
        return 0;
      ++nextNumber_;
      expectsHeader_ = nextNumber_ == endNumber_;
      tokens.dropFront(3);
    }
  }
  return 1;
}

int CPDFXRefTable::read(CIOStream &stream) {
  ReleaseParse();
  TokenReader reader(stream, TokenReader::Comments::cut);
  tokens_.Reset();
  char goOn = 1;
  int result = 1;
  unsigned long handedOver = 0;
  while (result == 1 && goOn != 0 && reader.next(tokens_)) {
    const bool isTrailer = tokens_.token(reader.lineIndex()).starts_with("trailer");
    if (isTrailer) {
      // An entry whose line end is in the next block may wait.
      tokens_.DeleteParam(reader.lineIndex(), CParamArray::notFound);
      if (tokens_.GetCount() > handedOver && handOver(goOn) != 1)
        return 0;
      return stream.Seek(reader.linePosition(), streamSeekBegin) == 1 ? 1 : 0;
    }
    if (!reader.isGroupComplete())
      continue;
    result = handOver(goOn);
    handedOver = tokens_.GetCount();
  }
  return goOn != 0 && result == 1 ? reader.result() : result;
}

int CPDFXRefTable::Release() {
  entries_.clear();
  size_ = 0;
  return CPDFSection::Release();
}

int CPDFXRefTable::ReleaseParse() {
  expectsHeader_ = true;
  nextNumber_ = 0;
  endNumber_ = 0;
  return CPDFSection::ReleaseParse();
}

int CPDFXRefTable::SetTableSize(int count) {
  Release();
  size_ = std::max(count, 0);
  return 1;
}

int CPDFXRefTable::SetRefTable(int index, unsigned long offset, unsigned short generation,
                               unsigned char /*type*/) {
  return zeroWithoutMemory([&] {
    return set({index, static_cast<std::uint32_t>(offset), generation}) ? 1 : 0;
  });
}

bool CPDFXRefTable::set(Entry entry) {
  if (entry.number < 0 || entry.number == std::numeric_limits<std::int32_t>::max())
    return false;
  isSorted_ = isSorted_ && (entries_.empty() || entries_.back().number <= entry.number);
  entries_.push_back(entry);
  size_ = std::max(size_, entry.number + 1);
  return true;
}

unsigned long CPDFXRefTable::GetOffset(tagOBJECTRECORD ref) const noexcept {
  const auto isBefore = [](const Entry &a, const Entry &b) { return a.number < b.number; };
  if (!std::exchange(isSorted_, true))
    std::stable_sort(entries_.begin(), entries_.end(), isBefore);
  // The last entry of a number counts. In most tables its index is that number.
  auto place = static_cast<std::size_t>(ref.number);
  if (place + 1 >= entries_.size() || entries_[place].number != ref.number ||
      entries_[place + 1].number == ref.number)
    place = static_cast<std::size_t>(
                std::upper_bound(entries_.begin(), entries_.end(), Entry{ref.number}, isBefore) -
                entries_.begin()) -
            1;
  if (place >= entries_.size())
    return 0;
  const Entry &entry = entries_[place];
  return entry.number == ref.number && entry.generation == ref.generation ? entry.offset : 0;
}

} // namespace searchsystem
