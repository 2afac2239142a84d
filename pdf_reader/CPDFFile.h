#pragma once

#include "pdf_reader/CPDFPages.h"
#include "pdf_reader/CPDFXRefTable.h"
#include "pdf_reader/FileChunks.h"
#include "pdf_reader/ReadBounds.h"
#include "streams/CFileStream.h"

#include <atomic>
#include <cstddef>
#include <vector>

namespace searchsystem {

class CPDFTrailer;
class KeywordSearch;
class NSString;

/// A PDF document, and whether a keyword occurs in the text of its pages.
///
/// It reads documents of the classic layout: cross-reference sections and trailers, a page tree of
/// one level, and content streams without compression. Others do not open, or nothing is found in
/// them.
///
/// Reading of damaged documents is bounded (`ReadBounds.h`).
///
/// Ownership: owns the open file. Threads: one at a time.
class CPDFFile : public CFileStream {
public:
  CPDFFile() noexcept = default;
  ~CPDFFile() { CPDFFile::Release(); }

  /// Opens the document at a path. 1 if `FindText` can be called; otherwise 0, and the object is
  /// released.
  int Open(const char *path);
  using CFileStream::Open;

  /// Whether a keyword (an `NSString`) occurs in the text of the pages, whose bytes are in a Core
  /// Foundation encoding: 1 or 0. 0 also if an earlier part of the document cannot be read. A
  /// `caseSensitive` of 0 ignores case.
  int FindText(const void *keyword, int caseSensitive, unsigned long encoding);

  /// Like `Open` and `FindText`, but throw `std::bad_alloc` if memory is short. After a failed
  /// `open` the caller must release the object.
  bool open(const char *path);
  bool findText(const NSString *keyword, bool isCaseSensitive, unsigned long encoding);

  /// Whether a content stream of the first page bears the mark of `CPDFStrmObjVorda`: 1 or 0.
  int IsVordaPDF();

  /// Once `*isStopped` is not 0, all reads of the open document fail. Any thread may set the flag,
  /// which must outlive the document; null forgets it.
  void StopWhen(const std::atomic<char> *isStopped) noexcept { isStopped_ = isStopped; }

  /// 1 also if nothing is open.
  int Close() override;

  int Release() override;

  // As a stream, an open document is read through a cache.
  int Read(void *buffer, long count, long *done) override;
  int Seek(long offset, unsigned short origin) override;
  long Tell() override;
  long GetSize() override;

private:
  bool openDocument();
  bool findTrailers(CPDFTrailer &last, CPDFTrailer &other, long &lastPosition);
  bool readTables(CPDFTrailer &last, CPDFTrailer &other, long lastPosition);
  bool readPages(const CPDFTrailer &last);
  bool parseAt(tagOBJECTRECORD object, CPDFSection &section);
  [[nodiscard]] long positionOf(tagOBJECTRECORD object) const noexcept {
    return static_cast<long>(xrefTable_.GetOffset(object));
  }
  std::vector<long> startsOfContents();
  bool findInEach(const std::vector<long> &starts, const KeywordSearch &search);
  bool loadChunk(std::size_t number, const char *&bytes);

  bool isOpen_ = false;
  CPDFXRefTable xrefTable_;
  CPDFPages pages_;

  long size_ = 0;
  long position_ = 0;
  FileChunks chunks_;
  ReadBounds bounds_;
  /// As the opening left them: each search may read as much.
  ReadBounds boundsForSearch_;
  const std::atomic<char> *isStopped_ = nullptr;
};

} // namespace searchsystem
