#include "pdf_reader/CPDFFile.h"

#include "pdf_reader/CPDFCatalog.h"
#include "pdf_reader/CPDFContents.h"
#include "pdf_reader/CPDFKids.h"
#include "pdf_reader/CPDFStrmObjVorda.h"
#include "pdf_reader/CPDFTrailer.h"
#include "pdf_reader/ContentSearch.h"
#include "pdf_reader/KeywordSearch.h"
#include "pdf_reader/PassedRanges.h"
#include "pdf_reader/ZeroWithoutMemory.h"
#include "platform/foundation/NSString.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace searchsystem {

namespace {

/// Gives `last` the root of `other` if it has none.
void completeRoot(CPDFTrailer &last, const CPDFTrailer &other) noexcept {
  tagOBJECTRECORD root;
  if (last.GetRootInfo(&root) != 1 && other.GetRootInfo(&root) == 1)
    last.SetRootInfo(&root);
}

} // namespace

int CPDFFile::Open(const char *path) {
  Release();
  if (zeroWithoutMemory([&] { return openFile(path) && openDocument() ? 1 : 0; }) == 1)
    return 1;
  Release();
  return 0;
}

bool CPDFFile::openFile(const char *path) {
  if (CreateFileStream(path, streamProgressNone, nullptr) != 1 ||
      CFileStream::Open(streamReadMode) != 1)
    return false;
  size_ = CFileStream::GetSize();
  position_ = 0;
  bounds_ = ReadBounds(size_);
  isOpen_ = true;
  return true;
}

bool CPDFFile::openDocument() {
  char header[8];
  if (Read(header, sizeof header, nullptr) != 1 ||
      !std::string_view(header, sizeof header).starts_with("%PDF-"))
    return false;
  CPDFTrailer last;
  CPDFTrailer other;
  long lastPosition = 0;
  if (!findTrailers(last, other, lastPosition) || !readTables(last, other, lastPosition) ||
      !readPages(last))
    return false;
  boundsForSearch_ = bounds_;
  return true;
}

/// Reads the last trailer of the file, and completes it from the one that follows the
/// cross-reference section it names.
bool CPDFFile::findTrailers(CPDFTrailer &last, CPDFTrailer &other, long &lastPosition) {
  if (CPDFTrailer::Move1stTrailer(this) != 1)
    return false;
  lastPosition = Tell();
  if (last.Parse(this) != 1 || Seek(last.GetXRefOffset(), streamSeekBegin) != 1 ||
      CPDFTrailer::MoveNextTrailer(this) != 1)
    return false;
  if (Tell() == lastPosition)
    return true;
  if (other.Parse(this) != 1)
    return false;
  int size = 0;
  int otherSize = 0;
  if (other.GetXRefKeySize(&otherSize) == 1 &&
      (last.GetXRefKeySize(&size) != 1 || size < otherSize))
    last.SetXRefKeySize(otherSize);
  completeRoot(last, other);
  return true;
}

/// Reads the cross-reference sections, from the one that the last trailer names to the one before
/// that trailer.
bool CPDFFile::readTables(CPDFTrailer &last, CPDFTrailer &other, long lastPosition) {
  int size = 0;
  if (last.GetXRefKeySize(&size) != 1 || xrefTable_.SetTableSize(size) != 1)
    return false;
  std::unordered_set<int> visited;
  for (int offset = last.GetXRefOffset(); offset != 0 && visited.insert(offset).second;
       offset = other.GetXRefOffset()) {
    if (Seek(offset, streamSeekBegin) != 1 || xrefTable_.Parse(this) != 1)
      return false;
    if (Tell() == lastPosition)
      break;
    if (other.Parse(this) != 1)
      return false;
    completeRoot(last, other);
  }
  return true;
}

bool CPDFFile::readPages(const CPDFTrailer &last) {
  tagOBJECTRECORD root;
  CPDFCatalog catalog;
  if (last.GetRootInfo(&root) != 1 || !parseAt(root, catalog))
    return false;
  tagOBJECTRECORD pages;
  catalog.GetPagesInfo(&pages);
  return parseAt(pages, pages_);
}

bool CPDFFile::parseAt(tagOBJECTRECORD object, CPDFSection &section) {
  return Seek(static_cast<long>(xrefTable_.GetOffset(object)), streamSeekBegin) == 1 &&
         section.Parse(this) == 1;
}

int CPDFFile::FindText(const void *keyword, int caseSensitive, unsigned long encoding) {
  if (keyword == nullptr || !isOpen_)
    return 0;
  bounds_ = boundsForSearch_;
  return zeroWithoutMemory([&] {
    const KeywordSearch search(*static_cast<const NSString *>(keyword), caseSensitive != 0,
                               encoding);
    const std::vector<long> starts = startsOfContents();
    if (!search.canBeCut())
      return findInEach(starts, search);
    return ContentSearch(*this, search, bounds_, starts).isFound() ? 1 : 0;
  });
}

/// Where the contents begin, in the order of pages, up to the first page that cannot be read.
std::vector<long> CPDFFile::startsOfContents() {
  std::vector<long> starts;
  PassedRanges passed(bounds_);
  CPDFKids kids;
  // A page that comes again has the same contents.
  std::unordered_set<unsigned long> visited;
  for (unsigned int i = 0; i < pages_.GetKidsCount(); ++i) {
    const tagOBJECTRECORD *const kid =
        i <= INT_MAX ? pages_.GetKidsInfo(static_cast<int>(i)) : nullptr;
    if (kid == nullptr)
      break;
    const unsigned long position = xrefTable_.GetOffset(*kid);
    const auto start = static_cast<long>(position);
    if (!visited.insert(position).second || passed.holds(start))
      continue;
    kids.EndAt(passed.nextFrom(start));
    if (!parseAt(*kid, kids))
      break;
    passed.note(start, kids.parsedTo());
    for (int j = 0; j < kids.GeContentsCount(); ++j)
      starts.push_back(static_cast<long>(xrefTable_.GetOffset(*kids.GetContentsInfo(j))));
  }
  return starts;
}

/// Looks for a keyword in each text as a whole, for encodings whose texts cannot be cut into pieces
/// (`KeywordSearch::canBeCut`).
int CPDFFile::findInEach(const std::vector<long> &starts, const KeywordSearch &search) {
  CPDFContents contents;
  std::unordered_set<long> visited;
  for (const long start : starts) {
    if (!visited.insert(start).second)
      continue;
    if (Seek(start, streamSeekBegin) != 1 || contents.Parse(this) != 1)
      return 0;
    std::string text(static_cast<std::size_t>(contents.GetTextLength()), '\0');
    unsigned long size = text.size();
    contents.GetTextString(reinterpret_cast<unsigned char *>(text.data()), &size);
    text.resize(size);
    std::optional<bool> occurs;
    for (std::size_t i = 0; i < search.encodingCount() && !occurs; ++i)
      occurs = search.occursIn(text, i);
    if (occurs.value_or(false))
      return 1;
  }
  return 0;
}

int CPDFFile::IsVordaPDF() {
  if (!isOpen_ || pages_.GetKidsCount() == 0 || pages_.GetKidsInfo(0) == nullptr)
    return 0;
  bounds_ = boundsForSearch_;
  CPDFKids kids;
  if (!parseAt(*pages_.GetKidsInfo(0), kids))
    return 0;
  return zeroWithoutMemory([&] {
    CPDFStrmObjVorda mark;
    PassedRanges passed(bounds_);
    std::unordered_set<unsigned long> visited;
    for (int i = 0; i < kids.GeContentsCount(); ++i) {
      const unsigned long position = xrefTable_.GetOffset(*kids.GetContentsInfo(i));
      const auto start = static_cast<long>(position);
      if (!visited.insert(position).second || passed.holds(start))
        continue;
      mark.EndAt(passed.nextFrom(start));
      if (!parseAt(*kids.GetContentsInfo(i), mark))
        return 0;
      if (mark.IsVorda() == 1)
        return 1;
      passed.note(start, mark.parsedTo());
    }
    return 0;
  });
}

int CPDFFile::Close() {
  if (!isOpen_) {
    CFileStream::Close();
    return 1;
  }
  if (CFileStream::Close() != 1)
    return 0;
  isOpen_ = false;
  chunks_.clear();
  return 1;
}

int CPDFFile::Release() {
  if (isOpen_)
    Close();
  isOpen_ = false;
  CFileStream::Release();
  xrefTable_.Release();
  pages_.Release();
  size_ = position_ = 0;
  return 1;
}

int CPDFFile::Read(void *buffer, long count, long *done) {
  if (!isOpen_)
    return CFileStream::Read(buffer, count, done);
  if (done != nullptr)
    *done = 0;
  if (buffer == nullptr || count < 0 || !bounds_.take(ReadBounds::Kind::file, count))
    return 0;
  auto *out = static_cast<char *>(buffer);
  const long wanted = std::min(count, std::max(size_ - position_, 0L));
  for (long left = wanted; left > 0;) {
    const auto place = static_cast<std::size_t>(position_);
    const char *bytes = nullptr;
    if (!loadChunk(place / FileChunks::chunkSize, bytes))
      return 0;
    const std::size_t offset = place % FileChunks::chunkSize;
    const auto size = std::min(static_cast<std::size_t>(left), FileChunks::chunkSize - offset);
    std::memcpy(out, bytes + offset, size);
    out += size;
    position_ += static_cast<long>(size);
    left -= static_cast<long>(size);
    if (done != nullptr)
      *done += static_cast<long>(size);
  }
  return wanted == count ? 1 : 0;
}

bool CPDFFile::loadChunk(std::size_t number, const char *&bytes) {
  if (isStopped_ != nullptr && *isStopped_ != 0)
    return false;
  bytes = chunks_.find(number);
  if (bytes != nullptr)
    return true;
  char *const room = chunks_.replaceOldest(number);
  const long start = static_cast<long>(number * FileChunks::chunkSize);
  const long size = std::min(static_cast<long>(FileChunks::chunkSize), size_ - start);
  if (room == nullptr || CFileStream::Seek(start, streamSeekBegin) != 1 ||
      CFileStream::Read(room, size, nullptr) != 1)
    return false;
  chunks_.keep();
  bytes = room;
  return true;
}

int CPDFFile::Seek(long offset, unsigned short origin) {
  if (!isOpen_)
    return CFileStream::Seek(offset, origin);
  if (offset < 0 || origin < streamSeekBegin || origin > streamSeekEnd)
    return 0;
  position_ = offset;
  return 1;
}

long CPDFFile::Tell() { return isOpen_ ? position_ : CFileStream::Tell(); }

long CPDFFile::GetSize() { return isOpen_ ? size_ : CFileStream::GetSize(); }

} // namespace searchsystem
