#include "pdf_reader/CPDFFile.h"

#include "pdf_reader/CPDFCatalog.h"
#include "pdf_reader/CPDFContents.h"
#include "pdf_reader/CPDFKids.h"
#include "pdf_reader/CPDFStrmObjVorda.h"
#include "pdf_reader/CPDFTrailer.h"
#include "pdf_reader/ContentSearch.h"
#include "pdf_reader/KeywordSearch.h"
#include "pdf_reader/PassedRanges.h"
#include "platform/foundation/NSString.h"
#include "streams/ZeroWithoutMemory.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace searchsystem {

namespace {

/// Copies the root of `other` to `last` if that has none.
void completeRoot(CPDFTrailer &last, const CPDFTrailer &other) noexcept {
  tagOBJECTRECORD root;
  if (last.GetRootInfo(&root) != 1 && other.GetRootInfo(&root) == 1)
    last.SetRootInfo(&root);
}

} // namespace

int CPDFFile::Open(const char *path) {
  const int result = zeroWithoutMemory([&] { return open(path) ? 1 : 0; });
  if (result != 1)
    Release();
  return result;
}

bool CPDFFile::open(const char *path) {
  Release();
  if (path == nullptr || *path == '\0')
    return false;
  if (CreateFileStream(path, streamProgressNone, nullptr) != 1)
    throw std::bad_alloc();
  if (!reopen(streamReadMode))
    return false;
  size_ = CFileStream::GetSize();
  chunks_ = FileChunks(size_);
  bounds_ = ReadBounds(size_);
  isOpen_ = true;
  if (!openDocument())
    return false;
  boundsForSearch_ = bounds_;
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
  return findTrailers(last, other, lastPosition) && readTables(last, other, lastPosition) &&
         readPages(last);
}

/// Reads the last trailer of the file, and completes it from the one after the cross-reference
/// section that it names.
bool CPDFFile::findTrailers(CPDFTrailer &last, CPDFTrailer &other, long &lastPosition) {
  if (!CPDFTrailer::moveToLast(*this))
    return false;
  lastPosition = Tell();
  if (last.read(*this) != 1 || Seek(last.GetXRefOffset(), streamSeekBegin) != 1 ||
      !CPDFTrailer::moveToNext(*this))
    return false;
  if (Tell() == lastPosition)
    return true;
  if (other.read(*this) != 1)
    return false;
  int size = 0;
  int otherSize = 0;
  if (other.GetXRefKeySize(&otherSize) == 1 &&
      (last.GetXRefKeySize(&size) != 1 || size < otherSize))
    last.SetXRefKeySize(otherSize);
  completeRoot(last, other);
  return true;
}

/// Reads the cross-reference sections, from the one that the last trailer names to the one just
/// before that trailer.
bool CPDFFile::readTables(CPDFTrailer &last, CPDFTrailer &other, long lastPosition) {
  int size = 0;
  if (last.GetXRefKeySize(&size) != 1 || xrefTable_.SetTableSize(size) != 1)
    return false;
  std::unordered_set<int> visited;
  for (int offset = last.GetXRefOffset(); offset != 0 && visited.insert(offset).second;
       offset = other.GetXRefOffset()) {
    if (Seek(offset, streamSeekBegin) != 1 || xrefTable_.read(*this) != 1)
      return false;
    if (Tell() == lastPosition)
      break;
    if (other.read(*this) != 1)
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
  return Seek(positionOf(object), streamSeekBegin) == 1 && section.read(*this) == 1;
}

int CPDFFile::FindText(const void *keyword, int caseSensitive, unsigned long encoding) {
  return zeroWithoutMemory([&] {
    return findText(static_cast<const NSString *>(keyword), caseSensitive != 0, encoding) ? 1 : 0;
  });
}

bool CPDFFile::findText(const NSString *keyword, bool isCaseSensitive, unsigned long encoding) {
  if (keyword == nullptr || !isOpen_)
    return false;
  bounds_ = boundsForSearch_;
  const KeywordSearch search(*keyword, isCaseSensitive, encoding);
  const std::vector<long> starts = startsOfContents();
  return search.canBeCut() ? ContentSearch(*this, search, bounds_.contents, starts).isFound()
                           : findInEach(starts, search);
}

/// The positions of the contents in the order of pages, up to the first unreadable page.
std::vector<long> CPDFFile::startsOfContents() {
  std::vector<long> starts;
  PassedRanges passed(bounds_.nodes);
  CPDFKids kids;
  for (unsigned int i = 0; i < pages_.GetKidsCount(); ++i) {
    const tagOBJECTRECORD *const kid =
        i <= INT_MAX ? pages_.GetKidsInfo(static_cast<int>(i)) : nullptr;
    if (kid == nullptr)
      break;
    const long start = positionOf(*kid);
    if (!passed.admits(start, kids))
      continue;
    if (!parseAt(*kid, kids))
      break;
    passed.note(start, kids);
    for (int j = 0; j < kids.GeContentsCount(); ++j)
      starts.push_back(positionOf(*kids.GetContentsInfo(j)));
  }
  return starts;
}

/// Looks for a keyword in each text as a whole, if texts cannot be cut (`KeywordSearch::canBeCut`).
bool CPDFFile::findInEach(const std::vector<long> &starts, const KeywordSearch &search) {
  CPDFContents contents;
  std::unordered_set<long> visited;
  for (const long start : starts) {
    if (!visited.insert(start).second)
      continue;
    if (Seek(start, streamSeekBegin) != 1 || contents.read(*this) != 1)
      return false;
    std::optional<bool> occurs;
    for (std::size_t i = 0; i < search.encodingCount() && !occurs; ++i)
      occurs = search.occursIn(contents.text(), i);
    if (occurs.value_or(false))
      return true;
  }
  return false;
}

int CPDFFile::IsVordaPDF() {
  if (!isOpen_ || pages_.GetKidsCount() == 0 || pages_.GetKidsInfo(0) == nullptr)
    return 0;
  bounds_ = boundsForSearch_;
  return zeroWithoutMemory([&] {
    CPDFKids kids;
    if (!parseAt(*pages_.GetKidsInfo(0), kids))
      return 0;
    CPDFStrmObjVorda mark;
    PassedRanges passed(bounds_.nodes);
    for (int i = 0; i < kids.GeContentsCount() && mark.IsVorda() == 0; ++i) {
      const tagOBJECTRECORD content = *kids.GetContentsInfo(i);
      const long start = positionOf(content);
      if (!passed.admits(start, mark))
        continue;
      if (!parseAt(content, mark))
        return 0;
      passed.note(start, mark);
    }
    return mark.IsVorda();
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
  chunks_ = {};
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
  if (buffer == nullptr || count < 0 || !bounds_.file.take(count))
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
  if (CFileStream::Seek(start, streamSeekBegin) != 1 || CFileStream::Read(room, size, nullptr) != 1)
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
