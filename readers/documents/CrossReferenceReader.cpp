#include "readers/documents/CrossReferenceReader.h"

#include "readers/documents/CharacterClass.h"

#include <algorithm>

namespace searchsystem {

namespace {

using Kind = CrossReference::Kind;

std::size_t skipBlanks(std::string_view text, std::size_t at) noexcept {
  while (at < text.size() && CharacterClass::isBlank(text[at]))
    ++at;
  return at;
}

std::optional<std::uint64_t> takeNumber(std::string_view text, std::size_t &at) noexcept {
  constexpr std::size_t mostDigits = 18;
  const std::size_t begin = at;
  std::uint64_t value = 0;
  while (at < text.size() && CharacterClass::isDigit(text[at]) && at - begin < mostDigits)
    value = value * 10 + static_cast<std::uint64_t>(text[at++] - '0');
  return at == begin ? std::nullopt : std::optional(value);
}

std::optional<std::uint64_t> offsetOf(const Object &object) noexcept {
  return object.isNumber() && object.integer() >= 0
             ? std::optional(static_cast<std::uint64_t>(object.integer()))
             : std::nullopt;
}

} // namespace

bool CrossReferenceReader::read() {
  headerOffset_ = findHeader();
  previous_ = findStart();
  if (!previous_)
    return false;
  while (previous_) {
    const std::uint64_t offset = *previous_;
    previous_.reset();
    if (!seen_.insert(offset).second)
      return true;
    if (readPart(offset + headerOffset_))
      continue;
    if (headerOffset_ == 0 || !readPart(offset))
      return false;
  }
  return true;
}

// 7.5.2: the header is the first line. Mail and web servers have put lines in front of it.
std::uint64_t CrossReferenceReader::findHeader() {
  constexpr std::size_t looked = 1024;
  const std::size_t place = window_.at(0, looked).substr(0, looked).find("%PDF-");
  return place == std::string_view::npos ? 0 : place;
}

// 7.5.5.
std::optional<std::uint64_t> CrossReferenceReader::findStart() {
  constexpr std::string_view word = "startxref";
  for (const std::uint64_t looked : {std::uint64_t{1024}, std::uint64_t{16384}}) {
    const std::uint64_t begin = window_.size() - std::min(window_.size(), looked);
    const std::string_view tail = window_.at(begin, static_cast<std::size_t>(looked));
    const std::size_t place = tail.rfind(word);
    if (place == std::string_view::npos)
      continue;
    std::size_t at = skipBlanks(tail, place + word.size());
    return takeNumber(tail, at);
  }
  return std::nullopt;
}

bool CrossReferenceReader::readPart(std::uint64_t offset) {
  if (const auto behind = objects_.behindKeyword(offset, "xref"))
    return readTable(*behind);
  return readStream(offset);
}

bool CrossReferenceReader::readTable(std::uint64_t offset) {
  freeNumbers_.clear();
  const auto trailerAt = readEntries(offset);
  const auto trailer = trailerAt ? objects_.readDirect(*trailerAt) : std::nullopt;
  if (!trailer || !trailer->object.isDictionary())
    return false;
  const Dictionary dictionary = trailer->object.dictionary();
  takeTrailer(dictionary);
  const auto older = offsetOf(dictionary.get("Prev"));
  bool isGood = true;
  if (const auto beside = offsetOf(dictionary.get("XRefStm"));
      beside && seen_.insert(*beside).second)
    isGood = readStream(*beside + headerOffset_) || (headerOffset_ > 0 && readStream(*beside));
  for (const std::uint64_t number : freeNumbers_)
    add(number, Kind::free, 0, 0);
  previous_ = older;
  return isGood;
}

// An entry is two numbers and a letter, the head of a subsection two numbers: which is which shows
// without the counts and line ends, which writers get wrong.
std::optional<std::uint64_t> CrossReferenceReader::readEntries(std::uint64_t offset) {
  constexpr std::size_t viewSize = 32768;
  constexpr std::size_t longestEntry = 256;
  std::uint64_t number = 0;
  bool isFirst = true;
  for (;;) {
    const std::string_view view = window_.at(offset, viewSize);
    const bool isAll = offset + view.size() >= window_.size();
    std::size_t at = 0;
    while (isAll || view.size() - at > longestEntry) {
      at = skipBlanks(view, at);
      if (view.substr(at).starts_with("trailer"))
        return offset + at + std::string_view("trailer").size();
      const auto left = takeNumber(view, at);
      at = skipBlanks(view, at);
      const auto right = left ? takeNumber(view, at) : std::nullopt;
      if (!right)
        return std::nullopt;
      const std::size_t letter = skipBlanks(view, at);
      const char kind = letter < view.size() ? view[letter] : '\0';
      if (kind != 'n' && kind != 'f') {
        number = *left;
        isFirst = true;
        continue;
      }
      at = letter + 1;
      // Some writers count from 1 where the table begins with the entry that is object 0.
      if (isFirst && number == 1 && kind == 'f' && *left == 0 && *right == 65535)
        number = 0;
      isFirst = false;
      if (kind == 'f')
        freeNumbers_.push_back(number);
      else if (*left != 0)
        add(number, Kind::inFile, *left, 0);
      ++number;
    }
    if (!allowance_.spend(at) || at == 0)
      return std::nullopt;
    offset += at;
  }
}

bool CrossReferenceReader::readStream(std::uint64_t offset) {
  const auto read = objects_.readIndirect(offset, nullptr);
  const Stream *const stream = read ? read->object.stream() : nullptr;
  if (stream == nullptr || !stream->dictionary.get("Type").isName("XRef"))
    return false;
  const Dictionary &dictionary = stream->dictionary;
  takeTrailer(dictionary);
  previous_ = offsetOf(dictionary.get("Prev"));

  constexpr std::int64_t widest = 8;
  std::vector<std::size_t> widths;
  std::size_t rowSize = 0;
  for (const Object &width : dictionary.get("W").array()) {
    if (width.integer(-1) < 0 || width.integer() > widest || widths.size() == 3)
      break;
    widths.push_back(static_cast<std::size_t>(width.integer()));
    rowSize += widths.back();
  }
  if (widths.size() < 3 || rowSize == 0)
    return false;
  std::vector<std::uint64_t> index;
  for (const Object &number : dictionary.get("Index").array())
    index.push_back(static_cast<std::uint64_t>(std::max<std::int64_t>(0, number.integer())));
  if (index.empty())
    index = {0, offsetOf(dictionary.get("Size")).value_or(CrossReferenceTable::highest + 1)};

  std::size_t run = 0;
  std::uint64_t inRun = 0;
  std::string rest;
  decoder_.decode(*stream, nullptr, [&](std::string_view piece) {
    rest += piece;
    std::string_view rows = rest;
    for (; rows.size() >= rowSize; rows.remove_prefix(rowSize)) {
      while (run + 1 < index.size() && inRun == index[run + 1]) {
        run += 2;
        inRun = 0;
      }
      if (run + 1 >= index.size())
        return false;
      takeRow(index[run] + inRun++, rows.substr(0, rowSize), widths);
    }
    rest.erase(0, rest.size() - rows.size());
    return true;
  });
  return true;
}

// 7.5.8.3, table 18.
void CrossReferenceReader::takeRow(std::uint64_t number, std::string_view row,
                                   const std::vector<std::size_t> &widths) {
  std::array<std::uint64_t, 3> fields{1, 0, 0};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (widths[i] > 0)
      fields[i] = 0;
    for (std::size_t k = 0; k < widths[i]; ++k)
      fields[i] = fields[i] << 8 | static_cast<unsigned char>(row[k]);
    row.remove_prefix(widths[i]);
  }
  if (fields[0] == 0)
    add(number, Kind::free, 0, 0);
  else if (fields[0] == 1 && fields[1] != 0)
    add(number, Kind::inFile, fields[1], 0);
  else if (fields[0] == 2)
    add(number, Kind::inStream, fields[1], static_cast<std::uint32_t>(fields[2]));
}

void CrossReferenceReader::takeTrailer(const Dictionary &dictionary) {
  if (trailer_.get("Root").isNull())
    trailer_ = dictionary;
}

void CrossReferenceReader::add(std::uint64_t number, CrossReference::Kind kind,
                               std::uint64_t position, std::uint32_t index) {
  CrossReference *const entry = table_.make(number);
  if (entry == nullptr || entry->kind != Kind::unknown)
    return;
  entry->kind = kind;
  entry->position = position;
  entry->index = index;
}

} // namespace searchsystem
