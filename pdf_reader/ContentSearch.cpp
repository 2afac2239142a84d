#include "pdf_reader/ContentSearch.h"

#include "pdf_reader/TokenReader.h"

#include <algorithm>
#include <new>
#include <utility>

namespace {

constexpr long carefulRounds = 3;
constexpr long carefulBytesAtLeast = 3 << 16;

} // namespace

ContentSearch::ContentSearch(CIOStream &stream, const KeywordSearch &search)
    : stream_(stream), search_(search), answers_(stream.GetSize()), trail_(answers_, looseEnds_),
      passed_(stream.GetSize()), starts_(stream.GetSize(), search.overlap()),
      carefulBytesLeft_(carefulRounds * stream.GetSize() + carefulBytesAtLeast) {}

ContentSearch::Result ContentSearch::searchAt(long position) {
  if (answers_.at(position) != ObjectAnswer::unknown)
    return Result::absent;
  if (passed_.holds(position) && !answers_.isMet(position))
    return Result::absent;
  contents_.EndAt(passed_.nextFrom(position));
  if (search_.isStateless()) {
    trail_.clear();
    if (!parse(position, &trail_))
      return Result::failed;
    readOwnText();
    if (const auto result = searchPieces(position, text_))
      return *result;
  }
  if (!parse(position, nullptr))
    return Result::failed;
  return searchWhole(position, readText());
}

bool ContentSearch::parse(long position, ObjectTrail *trail) {
  contents_.FollowTrail(trail);
  if (stream_.Seek(position, streamSeekBegin) != 1 || contents_.Parse(&stream_) != 1)
    return false;
  carefulBytesLeft_ -= TokenReader::bytesBeyondFirstBlock(position, stream_.Tell());
  passed_.note(position, contents_.parsedTo(), stream_.Tell());
  return true;
}

std::string_view ContentSearch::readText() {
  auto size = static_cast<unsigned long>(contents_.GetTextLength());
  if (size == 0)
    return {};
  if (!buffer_.reserve(size) || contents_.GetTextString(buffer_.data(), &size) != 1)
    throw std::bad_alloc();
  return {reinterpret_cast<const char *>(buffer_.data()), size};
}

void ContentSearch::readOwnText() {
  text_ = readText();
  if (!trail_.isKnownMet())
    return;
  const ObjectTrail::Object &known = trail_.objects().back();
  text_.resize(known.textLength);
  starts_.append(known.position, text_);
}

void ContentSearch::noteStarts(long position, const Pieces &pieces) {
  const std::vector<ObjectTrail::Object> &objects = trail_.objects();
  long next = TextStarts::none;
  for (std::size_t i = objects.size(); i-- > 0; next = objects[i].position)
    if (next != TextStarts::none || !trail_.isKnownMet())
      starts_.note(objects[i].position, pieces[i + 1].bytes, next);
  if (next != position)
    starts_.note(position, pieces[0].bytes, next);
}

ContentSearch::Result ContentSearch::searchWhole(long position, std::string_view text) {
  ObjectAnswer answer = ObjectAnswer::unreadable;
  for (std::size_t i = 0; i < search_.encodingCount(); ++i)
    if (const auto converted = search_.convert(text, i)) {
      if (search_.occursIn(*converted))
        return Result::found;
      answer = i == 0 ? ObjectAnswer::absent : ObjectAnswer::absentInOther;
      break;
    }
  answers_.set(position, answer);
  starts_.note(position, text, TextStarts::none);
  return Result::absent;
}

/// Whether what a parse that begins at `start` reads beyond `position` may differ from what another
/// parse has read there.
bool ContentSearch::mayDiffer(long position, long start) const noexcept {
  return carefulBytesLeft_ > 0 && looseEnds_.areMetBeyond(position, start);
}

/// Cuts the text at the objects of the trail. The first piece begins at the content stream itself,
/// the last, behind a known object, holds but the beginning of the text there.
ContentSearch::Pieces ContentSearch::piecesOf(std::string_view text) const {
  Pieces pieces;
  pieces.reserve(trail_.objects().size() + 1);
  std::size_t start = 0;
  for (const ObjectTrail::Object &object : trail_.objects()) {
    pieces.push_back({text.substr(start, object.textLength - start), {}, Validity::unknown});
    start = object.textLength;
  }
  pieces.push_back({text.substr(start), {}, Validity::unknown});
  return pieces;
}

/// None when it cannot be told without reading all the text.
std::optional<ContentSearch::Result> ContentSearch::searchPieces(long position,
                                                                 std::string_view text) {
  const std::vector<ObjectTrail::Object> &objects = trail_.objects();
  if (trail_.isKnownMet() && mayDiffer(objects.back().position, position))
    return std::nullopt;

  Pieces pieces = piecesOf(text);
  std::vector<ObjectAnswer> found(pieces.size(), ObjectAnswer::unknown);
  std::size_t undecided = pieces.size() - (trail_.isKnownMet() ? 1 : 0);
  std::fill_n(found.begin(), undecided, ObjectAnswer::unreadable);
  for (std::size_t encoding = 0; encoding < search_.encodingCount() && undecided > 0; ++encoding) {
    convert(pieces, encoding);
    // Once the text is valid from one object on, it is from all later ones.
    const bool isFound = occursIn(pieces);
    if (isFound && pieces[0].validity == Validity::valid && found[0] == ObjectAnswer::unreadable)
      return Result::found;
    const ObjectAnswer absent = encoding == 0 ? ObjectAnswer::absent : ObjectAnswer::absentInOther;
    undecided = 0;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      if (found[i] != ObjectAnswer::unreadable || pieces[i].validity == Validity::invalid) {
        undecided += found[i] == ObjectAnswer::unreadable ? 1 : 0;
        continue;
      }
      // A character that is cut again and again is not followed for ever.
      const bool isAbsent =
          !isFound && (pieces[i].validity == Validity::valid || carefulBytesLeft_ <= 0);
      found[i] = isAbsent ? absent : ObjectAnswer::unknown;
    }
  }
  if (found[0] == ObjectAnswer::unknown)
    return std::nullopt;
  noteStarts(position, pieces);
  answers_.set(position, found[0]);
  for (std::size_t i = 0; i < objects.size(); ++i) {
    const long start = objects[i].position;
    if (start != position && !mayDiffer(start, position) && !mayDiffer(start, start))
      answers_.set(start, found[i + 1]);
  }
  return Result::absent;
}

void ContentSearch::convert(Pieces &pieces, std::size_t encoding) const {
  Validity following = Validity::valid;
  std::size_t i = pieces.size();
  if (trail_.isKnownMet()) {
    Piece &last = pieces[--i];
    // The end of what was read may have cut a character.
    constexpr std::size_t mostCut = 3;
    for (std::size_t cut = 0; cut <= std::min(mostCut, last.bytes.size()); ++cut)
      if ((last.converted =
               search_.convert(last.bytes.substr(0, last.bytes.size() - cut), encoding)))
        break;
    switch (answers_.at(trail_.objects().back().position)) {
    case ObjectAnswer::absent:
      following = encoding == 0 ? Validity::valid : Validity::unknown;
      break;
    case ObjectAnswer::absentInOther:
      following = encoding == 0 ? Validity::invalid : Validity::valid;
      break;
    default:
      following = Validity::invalid;
      break;
    }
    if (following == Validity::valid && !last.converted)
      following = Validity::unknown;
    last.validity = following;
  }
  const std::size_t lastOwn = i - 1;
  while (i-- > 0) {
    Piece &piece = pieces[i];
    piece.converted = search_.convert(piece.bytes, encoding);
    if (!piece.converted)
      following = validityOfInvalid(piece.bytes, i == lastOwn && !trail_.isKnownMet(), encoding);
    piece.validity = following;
  }
}

/// What is known of a text that begins with a piece that is not valid for itself: it is valid at
/// most if the piece ends inside a character.
ContentSearch::Validity ContentSearch::validityOfInvalid(std::string_view bytes, bool isLast,
                                                         std::size_t encoding) const {
  if (isLast)
    return Validity::invalid;
  constexpr std::size_t longestCharacter = 4;
  for (std::size_t cut = 1; cut < longestCharacter && cut <= bytes.size(); ++cut)
    if (search_.convert(bytes.substr(0, bytes.size() - cut), encoding))
      return Validity::unknown;
  return Validity::invalid;
}

/// Whether the keyword occurs in the text from the first object on from which it is valid.
bool ContentSearch::occursIn(const Pieces &pieces) const {
  const auto first = std::find_if(pieces.begin(), pieces.end(), [](const Piece &piece) {
    return piece.validity == Validity::valid;
  });
  if (first == pieces.end())
    return false;
  if (first + 1 == pieces.end())
    return search_.occursIn(*first->converted);
  std::string text;
  for (auto piece = first; piece != pieces.end(); ++piece)
    text += *piece->converted;
  return search_.occursIn(text);
}
