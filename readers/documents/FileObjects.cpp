#include "readers/documents/FileObjects.h"

#include "readers/documents/CharacterClass.h"
#include "readers/documents/IndirectHeader.h"

#include <algorithm>

namespace searchsystem {

namespace {

class ObjectDecryption final : public StringDecryption {
public:
  ObjectDecryption(const Encryption &encryption, Reference object) noexcept
      : encryption_(encryption), object_(object) {}
  [[nodiscard]] std::string_view decrypted(std::string_view string, Arena &arena) override {
    return encryption_.decrypted(string, object_, arena);
  }

private:
  const Encryption &encryption_;
  Reference object_;
};

} // namespace

std::optional<IndirectObject> FileObjects::readIndirect(std::uint64_t offset,
                                                        const Encryption *encryption) {
  return read(offset, Form::indirect, encryption);
}

std::optional<IndirectObject> FileObjects::readDirect(std::uint64_t offset) {
  return read(offset, Form::direct, nullptr);
}

std::optional<std::uint64_t> FileObjects::behindKeyword(std::uint64_t offset,
                                                        std::string_view keyword) {
  constexpr std::size_t mostBlanks = 64;
  const std::string_view view = window_.at(offset, mostBlanks + keyword.size());
  std::size_t at = 0;
  while (at < view.size() && at < mostBlanks && CharacterClass::isBlank(view[at]))
    ++at;
  if (!view.substr(at).starts_with(keyword))
    return std::nullopt;
  return offset + at + keyword.size();
}

std::optional<IndirectObject> FileObjects::read(std::uint64_t offset, Form form,
                                                const Encryption *encryption) {
  for (std::size_t wanted = firstView; !allowance_.isUsedUp(); wanted *= 4) {
    const std::string_view view = window_.at(offset, wanted);
    // Less than wanted is all that can be read.
    const bool isAll = view.size() < wanted || offset + view.size() >= window_.size() ||
                       view.size() >= largestView;
    wanted = std::max(wanted, view.size());
    parser_.reset(view, isAll ? ObjectParser::Bytes::all : ObjectParser::Bytes::moreToCome);

    IndirectObject read;
    if (form == Form::indirect) {
      const auto header = IndirectHeader::at(view);
      if (!header)
        return std::nullopt;
      read.reference = header->reference;
      parser_.setPosition(header->size);
    }
    std::optional<ObjectDecryption> decryption;
    if (encryption != nullptr)
      decryption.emplace(*encryption, read.reference);
    parser_.setDecryption(decryption ? &*decryption : nullptr);
    const std::size_t start = parser_.position();
    read.object = parser_.next();
    parser_.setDecryption(nullptr);
    const bool isComplete = read.object.kind() != Object::Kind::incomplete;
    if (!allowance_.spend(isComplete ? parser_.position() - start : view.size()))
      return std::nullopt;
    if (!isComplete)
      continue;
    read.end = offset + parser_.position();
    if (read.object.kind() == Object::Kind::keyword || read.object.kind() == Object::Kind::end) {
      // There is no object between `obj` and `endobj`.
      read.object = {};
      read.end = offset + start;
    }
    if (form == Form::direct || !read.object.isDictionary() || takeStream(read, offset, isAll))
      return read;
  }
  return std::nullopt;
}

bool FileObjects::takeStream(IndirectObject &read, std::uint64_t offset, bool isAll) {
  constexpr std::string_view keyword = "stream";
  constexpr std::size_t mostBlanks = 16;
  parser_.skipBlanks();
  const std::string_view view = parser_.bytes();
  std::size_t at = parser_.position();
  if (!isAll && view.size() - at < keyword.size() + mostBlanks)
    return false;
  if (!view.substr(at).starts_with(keyword))
    return true;
  at += keyword.size();
  // 7.3.8.1 asks for CR LF or LF. Blanks in front of them occur, and CR alone.
  std::size_t line = at;
  while (line < view.size() && line - at < mostBlanks - 2 &&
         (view[line] == ' ' || view[line] == '\t'))
    ++line;
  if (line < view.size() && (view[line] == '\r' || view[line] == '\n'))
    at = line + (view.substr(line).starts_with("\r\n") ? 2 : 1);

  auto *const stream = static_cast<Stream *>(arena_.allocate(sizeof(Stream)));
  read.end = offset + at;
  read.object =
      Object::ofStream(new (stream) Stream{read.object.dictionary(), read.end, read.reference});
  return true;
}

} // namespace searchsystem
