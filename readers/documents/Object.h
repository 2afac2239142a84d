#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace searchsystem {

class Dictionary;
struct DictionaryEntry;
struct Stream;

/// An indirect reference (ISO 32000-2, 7.3.10).
struct Reference {
  std::uint32_t number = 0;
  std::uint32_t generation = 0;
  bool operator==(const Reference &) const = default;
};

/// An object of a document (ISO 32000-2, 7.3), or what an ObjectParser answers besides: an
/// operator, the end. Sixteen bytes, to be copied freely; what it refers to belongs to the arena
/// that it was parsed into, which is the document's as long as the document lives. A question about
/// another kind is answered by the empty value of the kind asked about.
class Object {
public:
  enum class Kind : std::uint8_t {
    null,
    boolean,
    integer,
    real,
    string,
    name,
    array,
    dictionary,
    stream,
    reference,
    /// An operator of a content stream, or any other word.
    keyword,
    /// Nothing is left.
    end,
    /// The bytes end within the object, and more are to come.
    incomplete,
  };

  constexpr Object() noexcept = default;
  [[nodiscard]] static Object ofKind(Kind kind) noexcept;
  [[nodiscard]] static Object ofBoolean(bool value) noexcept;
  [[nodiscard]] static Object ofInteger(std::int64_t value) noexcept;
  [[nodiscard]] static Object ofReal(double value) noexcept;
  [[nodiscard]] static Object ofReference(Reference value) noexcept;
  /// `kind` is string, name or keyword; the bytes are not copied.
  [[nodiscard]] static Object ofBytes(Kind kind, std::string_view bytes) noexcept;
  [[nodiscard]] static Object ofArray(std::span<const Object> items) noexcept;
  [[nodiscard]] static Object ofDictionary(const Dictionary &dictionary) noexcept;
  [[nodiscard]] static Object ofStream(const Stream *stream) noexcept;

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  [[nodiscard]] bool isNull() const noexcept { return kind_ == Kind::null; }
  [[nodiscard]] bool isInteger() const noexcept { return kind_ == Kind::integer; }
  [[nodiscard]] bool isNumber() const noexcept {
    return kind_ == Kind::integer || kind_ == Kind::real;
  }
  [[nodiscard]] bool isString() const noexcept { return kind_ == Kind::string; }
  [[nodiscard]] bool isName() const noexcept { return kind_ == Kind::name; }
  [[nodiscard]] bool isName(std::string_view name) const noexcept {
    return isName() && bytes() == name;
  }
  [[nodiscard]] bool isKeyword(std::string_view word) const noexcept {
    return kind_ == Kind::keyword && bytes() == word;
  }
  [[nodiscard]] bool isArray() const noexcept { return kind_ == Kind::array; }
  [[nodiscard]] bool isDictionary() const noexcept { return kind_ == Kind::dictionary; }
  [[nodiscard]] bool isStream() const noexcept { return kind_ == Kind::stream; }
  [[nodiscard]] bool isReference() const noexcept { return kind_ == Kind::reference; }

  [[nodiscard]] bool boolean(bool otherwise = false) const noexcept {
    return kind_ == Kind::boolean ? value_.integer != 0 : otherwise;
  }
  /// A real number is cut to an integer, within the limits of 64 bits.
  [[nodiscard]] std::int64_t integer(std::int64_t otherwise = 0) const noexcept;
  [[nodiscard]] double number(double otherwise = 0) const noexcept;
  /// The bytes of a string (decrypted), of a name (without the slash, with #xx decoded), of a
  /// keyword.
  [[nodiscard]] std::string_view bytes() const noexcept {
    return kind_ == Kind::string || kind_ == Kind::name || kind_ == Kind::keyword
               ? std::string_view(value_.bytes, size_)
               : std::string_view();
  }
  [[nodiscard]] std::string_view name() const noexcept {
    return isName() ? bytes() : std::string_view();
  }
  [[nodiscard]] std::string_view string() const noexcept {
    return isString() ? bytes() : std::string_view();
  }
  [[nodiscard]] std::span<const Object> array() const noexcept {
    return isArray() ? std::span<const Object>(value_.items, size_) : std::span<const Object>();
  }
  /// A dictionary, or that of a stream.
  [[nodiscard]] Dictionary dictionary() const noexcept;
  /// Null if it is no stream.
  [[nodiscard]] const Stream *stream() const noexcept {
    return isStream() ? value_.stream : nullptr;
  }
  [[nodiscard]] Reference reference() const noexcept {
    return isReference() ? Reference{size_, value_.generation} : Reference{};
  }

private:
  Kind kind_ = Kind::null;
  /// Bytes, items or entries; of a reference the object's number.
  std::uint32_t size_ = 0;
  union {
    std::int64_t integer;
    double real;
    std::uint32_t generation;
    const char *bytes;
    const Object *items;
    const DictionaryEntry *entries;
    const Stream *stream;
  } value_ = {};
};

struct DictionaryEntry {
  std::string_view key;
  Object value;
};

/// A dictionary (ISO 32000-2, 7.3.7). Of entries with the same key the last one counts. Cheap to
/// copy.
class Dictionary {
public:
  /// From this many entries on they are sorted by key, equal ones in order, and looked up by
  /// halving.
  static constexpr std::size_t sortedFrom = 17;

  constexpr Dictionary() noexcept = default;
  explicit Dictionary(std::span<const DictionaryEntry> entries) noexcept : entries_(entries) {}

  /// The value as it stands, maybe a reference; the null object if there is none.
  [[nodiscard]] const Object &get(std::string_view key) const noexcept;
  [[nodiscard]] bool isEmpty() const noexcept { return entries_.empty(); }
  /// In no stated order; keys may repeat.
  [[nodiscard]] std::span<const DictionaryEntry> entries() const noexcept { return entries_; }

private:
  std::span<const DictionaryEntry> entries_;
};

/// A stream object (ISO 32000-2, 7.3.8): where its encoded data begin in the file.
struct Stream {
  Dictionary dictionary;
  std::uint64_t dataOffset = 0;
  /// The object itself: decryption depends on it.
  Reference object;
};

} // namespace searchsystem
