#include "readers/documents/FileScan.h"

#include "readers/documents/IndirectHeader.h"

#include <algorithm>
#include <memory>

namespace searchsystem {

namespace {

constexpr std::string_view objectWord = "obj";
constexpr std::string_view trailerWord = "trailer";
constexpr std::size_t readSize = 262144;
// The number in front of `obj`, and a word that the end of what was read cuts, are read twice.
constexpr std::size_t overlap = 256;

} // namespace

void FileScan::run(CrossReferenceTable &table) {
  const std::unique_ptr<char[]> room(new char[readSize]);
  // Bytes before this one belong to what was already taken.
  std::uint64_t from = 0;
  for (std::uint64_t begin = 0; begin < window_.size();) {
    const std::size_t size = window_.read(begin, room.get(), readSize);
    const std::string_view bytes(room.get(), size);
    const bool isAll = begin + size >= window_.size() || size <= overlap;
    const auto placeOf = [&](std::string_view word) {
      const std::uint64_t skipped = from > begin ? from - begin : 0;
      return skipped < size ? bytes.find(word, static_cast<std::size_t>(skipped))
                            : std::string_view::npos;
    };
    std::size_t object = placeOf(objectWord);
    std::size_t trailer = placeOf(trailerWord);
    while (object != std::string_view::npos || trailer != std::string_view::npos) {
      if (trailer < object) {
        from = begin + trailer + trailerWord.size();
        takeTrailer(from);
        trailer = placeOf(trailerWord);
        continue;
      }
      const std::uint64_t behind = begin + object + objectWord.size();
      const auto header = IndirectHeader::endingAt(bytes, object);
      from = header ? takeObject(behind - header->size, behind, header->reference, table) : behind;
      object = placeOf(objectWord);
      if (trailer != std::string_view::npos && begin + trailer < from)
        trailer = placeOf(trailerWord);
    }
    if (isAll)
      break;
    begin = std::max(begin + size - overlap, from - std::min<std::uint64_t>(from, overlap));
  }
}

std::uint64_t FileScan::takeObject(std::uint64_t offset, std::uint64_t behind, Reference reference,
                                   CrossReferenceTable &table) {
  CrossReference *const entry = table.make(reference.number);
  if (entry == nullptr)
    return behind;
  *entry = {};
  entry->kind = CrossReference::Kind::inFile;
  entry->position = offset;

  arena_.clear();
  const auto read = objects_.readIndirect(offset, nullptr);
  if (!read)
    return behind;
  const Dictionary dictionary = read->object.dictionary();
  const Object &type = dictionary.get("Type");
  if (type.isName("Catalog"))
    catalog_ = reference;
  if (!read->object.isStream()) {
    // An object that runs on to the next one does not hide it.
    const bool isClosed = objects_.behindKeyword(read->end, "endobj").has_value();
    return isClosed ? read->end : behind;
  }
  if (type.isName("ObjStm"))
    objectStreams_.push_back({reference.number, offset});
  if (type.isName("XRef") && !dictionary.get("Root").isNull())
    trailer_ = offset;
  const Object &length = dictionary.get("Length");
  if (!length.isInteger() || length.integer() < 0)
    return read->end;
  const std::uint64_t end = read->end + static_cast<std::uint64_t>(length.integer());
  return end < window_.size() && objects_.behindKeyword(end, "endstream") ? end : read->end;
}

void FileScan::takeTrailer(std::uint64_t offset) {
  arena_.clear();
  const auto read = objects_.readDirect(offset);
  if (read && !read->object.dictionary().get("Root").isNull())
    trailer_ = offset;
}

} // namespace searchsystem
