#pragma once

#include "readers/documents/Arena.h"
#include "readers/documents/Object.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Decrypts the strings of one object.
class StringDecryption {
public:
  StringDecryption() = default;
  StringDecryption(const StringDecryption &) = delete;
  StringDecryption &operator=(const StringDecryption &) = delete;
  virtual ~StringDecryption() = default;
  [[nodiscard]] virtual std::string_view decrypted(std::string_view string, Arena &arena) = 0;
};

/// Parses objects (ISO 32000-2, 7.2 and 7.3) and operators (7.8.2) from bytes in memory, one after
/// the other, in time linear in the bytes whatever they are: closing brackets that open nothing are
/// passed over, what is not closed ends with the bytes or at a word that only stands between
/// objects.
///
/// For a content stream that comes in pieces: give `Bytes::moreToCome`; at `incomplete`, keep what
/// stands from `position()` on, append the next piece, and `reset` with the longer bytes.
class ObjectParser {
public:
  /// Whether `12 0 R` is a reference; a content stream has none.
  enum class Syntax : std::uint8_t { objects, content };
  enum class Bytes : std::uint8_t { all, moreToCome };
  static constexpr int deepest = 100;

  /// Objects go to the arena. Keywords, and in a content stream strings and names as well, may be
  /// views into the bytes, which then have to stay while these are used.
  explicit ObjectParser(Arena &arena, Syntax syntax) noexcept : arena_(arena), syntax_(syntax) {}

  void reset(std::string_view bytes, Bytes ending = Bytes::all) noexcept;
  /// Of strings, from now on; null: they are taken as they are.
  void setDecryption(StringDecryption *decryption) noexcept { decryption_ = decryption; }

  /// The next object, keyword, or `end`. After `incomplete` the position is where the object began.
  [[nodiscard]] Object next();

  [[nodiscard]] std::size_t position() const noexcept {
    return static_cast<std::size_t>(at_ - begin_);
  }
  void setPosition(std::size_t position) noexcept;
  [[nodiscard]] std::string_view bytes() const noexcept { return {begin_, end_}; }
  /// Passes over white space and comments.
  void skipBlanks() noexcept;

private:
  /// Closing brackets are keywords here.
  [[nodiscard]] Object parse(int depth);
  [[nodiscard]] Object parseNumber() noexcept;
  [[nodiscard]] Object parseName();
  [[nodiscard]] Object parseLiteralString();
  [[nodiscard]] Object parseHexString();
  [[nodiscard]] Object parseArray(int depth);
  [[nodiscard]] Object parseDictionary(int depth);
  [[nodiscard]] Object parseKeyword();
  [[nodiscard]] bool takeReference(const Object &number, Object &reference) noexcept;
  [[nodiscard]] Object stringOf(std::string_view bytes, bool isCopied);
  [[nodiscard]] bool endsContainer(const Object &keyword) const noexcept;

  Arena &arena_;
  Syntax syntax_;
  bool isWhole_ = true;
  /// The bytes ended where more might have belonged to the object.
  bool ranOut_ = false;
  StringDecryption *decryption_ = nullptr;
  const char *begin_ = nullptr;
  const char *at_ = nullptr;
  const char *end_ = nullptr;
  /// What open arrays and dictionaries hold so far.
  std::vector<Object> open_;
  std::vector<DictionaryEntry> entries_;
  std::string text_;
};

} // namespace searchsystem
