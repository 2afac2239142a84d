#pragma once

#include "pdf_reader/CPDFContents.h"
#include "pdf_reader/KeywordSearch.h"
#include "pdf_reader/LooseEnds.h"
#include "pdf_reader/ObjectAnswers.h"
#include "pdf_reader/ObjectTrail.h"
#include "pdf_reader/PassedRanges.h"
#include "pdf_reader/PlainArray.h"
#include "pdf_reader/TextStarts.h"
#include "streams/CIOStream.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Looks for a keyword in the content streams of a document.
///
/// The parse of one content stream goes on through the objects behind it in the file. Where every
/// page begins with a text object, each parse would read the rest of the file; so what is found out
/// about the objects passed is remembered, and not read again. The answers are the same as if each
/// content stream were parsed for itself. Only in a document that would have to be read many times
/// over, because the edges of blocks fall where they change what is read, the answer of another
/// parse is taken at last.
///
/// Ownership: the stream and the keyword's search live longer. Threads: one at a time. Throws
/// `std::bad_alloc`.
class ContentSearch {
public:
  enum class Result { absent, found, failed };

  ContentSearch(CIOStream &stream, const KeywordSearch &search);

  /// Looks in the text of the content stream that begins at `position`.
  Result searchAt(long position);

private:
  /// Whether a text is valid in an encoding.
  enum class Validity { valid, invalid, unknown };

  /// The text between the beginnings of two objects, and what is known of all text from there on.
  struct Piece {
    std::string_view bytes;
    /// In UTF-8, if the piece is valid for itself.
    std::optional<std::string> converted;
    Validity validity;
  };
  using Pieces = std::vector<Piece>;

  bool parse(long position, ObjectTrail *trail);
  std::string_view readText();
  void readOwnText();
  void noteStarts(long position, const Pieces &pieces);
  Result searchWhole(long position, std::string_view text);
  std::optional<Result> searchPieces(long position, std::string_view text);
  [[nodiscard]] bool mayDiffer(long position, long start) const noexcept;
  [[nodiscard]] Pieces piecesOf(std::string_view text) const;
  void convert(Pieces &pieces, std::size_t encoding) const;
  [[nodiscard]] Validity validityOfInvalid(std::string_view bytes, bool isLast,
                                           std::size_t encoding) const;
  [[nodiscard]] bool occursIn(const Pieces &pieces) const;

  CIOStream &stream_;
  const KeywordSearch &search_;
  CPDFContents contents_;
  LooseEnds looseEnds_;
  ObjectAnswers answers_;
  ObjectTrail trail_;
  PassedRanges passed_;
  TextStarts starts_;
  PlainArray<unsigned char> buffer_;
  /// The text up to an object with a known answer, and how it goes on there.
  std::string text_;
  /// How many bytes may still be read before the edges of blocks are no more a reason to read
  /// bytes again.
  long carefulBytesLeft_;
};
