#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Gives the character maps that documents use by name and that stand outside of them.
class CharacterMaps {
public:
  CharacterMaps() = default;
  CharacterMaps(const CharacterMaps &) = delete;
  CharacterMaps &operator=(const CharacterMaps &) = delete;
  virtual ~CharacterMaps() = default;
  /// The bytes of the map of this name (`UniJIS-UTF16-H`, `Adobe-Japan1-UCS2`); none if there is no
  /// such map.
  [[nodiscard]] virtual std::string read(std::string_view name) const = 0;
};

class NamedMaps;

/// A character map (ISO 32000-2, 9.7.5 and 9.10.3): how strings are cut into codes, and what each
/// code selects: a character identifier, or text.
class CharacterMap {
public:
  /// A code of a string, and how many bytes it took.
  struct Code {
    std::uint32_t value;
    std::size_t length;
  };

  /// `program` is the map as it stands in its file. `maps` gives the maps that it builds on.
  /// Time and memory are linear in the bytes.
  [[nodiscard]] static std::shared_ptr<const CharacterMap>
  parse(std::string_view program, NamedMaps &maps,
        std::shared_ptr<const CharacterMap> base = nullptr);
  /// Two bytes to a code, which is the identifier, or the character in UTF-16.
  [[nodiscard]] static std::shared_ptr<const CharacterMap> identity(bool isVertical);

  /// The first code of `bytes`, which are not empty. Bytes outside of all ranges of codes are
  /// passed over one by one.
  [[nodiscard]] Code firstCode(std::string_view bytes) const noexcept;
  /// All codes have two bytes.
  [[nodiscard]] bool isTwoByte() const noexcept { return isTwoByte_; }
  [[nodiscard]] bool isVertical() const noexcept { return isVertical_; }

  [[nodiscard]] std::optional<std::uint32_t> identifier(std::uint32_t code) const noexcept;
  /// Appends the text of the code; false if it has none.
  bool appendText(std::string &text, std::uint32_t code) const;

private:
  class Parser;

  struct CodeSpace {
    std::uint32_t low, high;
    std::size_t length;
    [[nodiscard]] bool holds(std::uint32_t code) const noexcept;
  };
  struct Range {
    std::uint32_t low, high;
    /// The first identifier; of a text the place of its first code point's text in `texts_`.
    std::uint32_t value;
    std::uint32_t length;
  };

  [[nodiscard]] static const Range *find(const std::vector<Range> &ranges,
                                         std::uint32_t code) noexcept;

  std::shared_ptr<const CharacterMap> base_;
  std::vector<CodeSpace> codeSpaces_;
  std::vector<Range> identifiers_;
  std::vector<Range> textRanges_;
  std::string texts_;
  bool isIdentity_ = false;
  bool isTwoByte_ = false;
  bool isVertical_ = false;
};

} // namespace searchsystem
