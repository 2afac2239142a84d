#include "readers/documents/Object.h"

#include <algorithm>

namespace searchsystem {

namespace {

const Object nullObject;

} // namespace

Object Object::ofKind(Kind kind) noexcept {
  Object object;
  object.kind_ = kind;
  return object;
}

Object Object::ofBoolean(bool value) noexcept {
  Object object = ofKind(Kind::boolean);
  object.value_.integer = value ? 1 : 0;
  return object;
}

Object Object::ofInteger(std::int64_t value) noexcept {
  Object object = ofKind(Kind::integer);
  object.value_.integer = value;
  return object;
}

Object Object::ofReal(double value) noexcept {
  Object object = ofKind(Kind::real);
  object.value_.real = value;
  return object;
}

Object Object::ofReference(Reference value) noexcept {
  Object object = ofKind(Kind::reference);
  object.size_ = value.number;
  object.value_.generation = value.generation;
  return object;
}

Object Object::ofBytes(Kind kind, std::string_view bytes) noexcept {
  Object object = ofKind(kind);
  object.size_ = static_cast<std::uint32_t>(bytes.size());
  object.value_.bytes = bytes.data();
  return object;
}

Object Object::ofArray(std::span<const Object> items) noexcept {
  Object object = ofKind(Kind::array);
  object.size_ = static_cast<std::uint32_t>(items.size());
  object.value_.items = items.data();
  return object;
}

Object Object::ofDictionary(const Dictionary &dictionary) noexcept {
  Object object = ofKind(Kind::dictionary);
  object.size_ = static_cast<std::uint32_t>(dictionary.entries().size());
  object.value_.entries = dictionary.entries().data();
  return object;
}

Object Object::ofStream(const Stream *stream) noexcept {
  Object object = ofKind(Kind::stream);
  object.value_.stream = stream;
  return object;
}

std::int64_t Object::integer(std::int64_t otherwise) const noexcept {
  if (kind_ == Kind::integer)
    return value_.integer;
  if (kind_ != Kind::real)
    return otherwise;
  constexpr double most = 9.2e18;
  return static_cast<std::int64_t>(std::clamp(value_.real, -most, most));
}

double Object::number(double otherwise) const noexcept {
  if (kind_ == Kind::integer)
    return static_cast<double>(value_.integer);
  return kind_ == Kind::real ? value_.real : otherwise;
}

Dictionary Object::dictionary() const noexcept {
  if (isDictionary())
    return Dictionary(std::span(value_.entries, size_));
  return isStream() ? value_.stream->dictionary : Dictionary();
}

const Object &Dictionary::get(std::string_view key) const noexcept {
  if (entries_.size() >= sortedFrom) {
    const auto behind = std::upper_bound(
        entries_.begin(), entries_.end(), key,
        [](std::string_view wanted, const DictionaryEntry &entry) { return wanted < entry.key; });
    return behind != entries_.begin() && (behind - 1)->key == key ? (behind - 1)->value
                                                                  : nullObject;
  }
  for (std::size_t i = entries_.size(); i > 0; --i)
    if (entries_[i - 1].key == key)
      return entries_[i - 1].value;
  return nullObject;
}

} // namespace searchsystem
