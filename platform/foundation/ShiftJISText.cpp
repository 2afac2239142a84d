#include "platform/foundation/ShiftJISText.h"

#include "platform/foundation/ASCIIText.h"
#include "platform/foundation/CodePoints.h"
#include "platform/foundation/IconvText.h"
#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/SingleByteText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace searchsystem {

namespace {

constexpr std::size_t firstTrail = 0x40;
constexpr std::size_t trailCount = 0xFD - firstTrail;
constexpr std::size_t leadCount = (0xA0 - 0x81) + (0xFD - 0xE0);
constexpr std::size_t none = leadCount * trailCount;

/// The table index of a two-byte character; `none` for other bytes.
std::size_t indexOf(char first, char second) noexcept {
  const std::size_t lead = static_cast<unsigned char>(first);
  const std::size_t trail = static_cast<unsigned char>(second);
  if (trail < firstTrail || trail - firstTrail >= trailCount)
    return none;
  if (lead >= 0x81 && lead < 0xA0)
    return (lead - 0x81) * trailCount + trail - firstTrail;
  if (lead >= 0xE0 && lead < 0xFD)
    return (lead - 0xE0 + (0xA0 - 0x81)) * trailCount + trail - firstTrail;
  return none;
}

std::string bytesAt(std::size_t index) {
  const std::size_t row = index / trailCount;
  const std::size_t lead = row < 0xA0 - 0x81 ? row + 0x81 : row - (0xA0 - 0x81) + 0xE0;
  return {static_cast<char>(lead), static_cast<char>(index % trailCount + firstTrail)};
}

/// Thrown if the C library's two-byte characters are not available, at least for now.
struct Unavailable {};

/// The two-byte characters, converted by iconv once, one by one: opening it for each text would
/// cost more than the text, and its single bytes differ from ours.
class DoubleByteTable {
public:
  /// Throws `std::bad_alloc` and `Unavailable`.
  explicit DoubleByteTable(ShiftJIS form) : characters_(leadCount * trailCount) {
    IconvText iconv("UTF-8", form == ShiftJIS::MacJapanese ? "SJIS" : "SHIFT_JISX0213");
    if (!iconv.isOpen())
      throw Unavailable();
    for (std::size_t i = 0; i < characters_.size(); ++i)
      if (const auto text = iconv.convert(bytesAt(i)); text && text->size() <= longest)
        put(i, *text);
    if (form == ShiftJIS::MacJapanese)
      put(indexOf('\x81', '\x5C'), "\u2014");
    for (std::size_t i = 0; i < characters_.size(); ++i)
      if (!at(i).empty())
        byText_.push_back(static_cast<std::uint16_t>(i));
    std::sort(byText_.begin(), byText_.end(),
              [this](std::size_t a, std::size_t b) { return at(a) < at(b); });
  }

  /// The longest character, in bytes of UTF-8: some of JIS X 0213 are two code points in Unicode, a
  /// letter and a combining mark.
  static constexpr std::size_t longest = 7;

  /// A character in UTF-8; empty if there is none.
  [[nodiscard]] std::string_view at(std::size_t index) const noexcept {
    if (index == none)
      return {};
    return {characters_[index].text.data(), characters_[index].length};
  }

  /// The place of a character given in UTF-8, or `none`.
  [[nodiscard]] std::size_t indexOfText(std::string_view text) const noexcept {
    const auto found = std::lower_bound(
        byText_.begin(), byText_.end(), text,
        [this](std::size_t index, std::string_view sought) { return at(index) < sought; });
    return found != byText_.end() && at(*found) == text ? *found : none;
  }

private:
  struct Character {
    std::uint8_t length = 0;
    std::array<char, longest> text{};
  };

  void put(std::size_t index, std::string_view text) noexcept {
    characters_[index].length = static_cast<std::uint8_t>(text.size());
    std::copy(text.begin(), text.end(), characters_[index].text.begin());
  }

  std::vector<Character> characters_;
  std::vector<std::uint16_t> byText_;
};

/// Created on first use, and again after a failure.
const DoubleByteTable &doubleBytesOf(ShiftJIS form) {
  if (form == ShiftJIS::MacJapanese) {
    static NeverDestroyed<DoubleByteTable> table(ShiftJIS::MacJapanese);
    return table.get();
  }
  static NeverDestroyed<DoubleByteTable> table(ShiftJIS::X0213);
  return table.get();
}

const SingleByteTable &singleBytesOf(ShiftJIS form) noexcept {
  return form == ShiftJIS::MacJapanese ? macJapaneseSingleBytes : shiftJISSingleBytes;
}

std::optional<std::string> decode(std::string_view bytes, ShiftJIS form) {
  const SingleByteTable &singles = singleBytesOf(form);
  const DoubleByteTable *doubles = nullptr;
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    // Of ASCII only the backslash differs: it is a yen sign.
    const std::string_view rest = bytes.substr(i, lengthOfASCIIRun(bytes.substr(i)));
    const std::string_view run = rest.substr(0, rest.find('\\'));
    text += run;
    i += run.size();
    if (i == bytes.size())
      break;
    if (const char16_t single = singles.characterOf(bytes[i]); single < 0x80) {
      text.push_back(static_cast<char>(single));
    } else if (single != SingleByteTable::notAlone) {
      appendCodePoint(text, single);
    } else {
      if (++i == bytes.size())
        return std::nullopt;
      if (doubles == nullptr)
        doubles = &doubleBytesOf(form);
      const std::string_view character = doubles->at(indexOf(bytes[i - 1], bytes[i]));
      if (character.empty())
        return std::nullopt;
      text += character;
    }
  }
  return text;
}

/// Takes the longest two-byte character at the beginning of `text`; `none` if there is none.
std::size_t takeDoubleByte(std::string_view &text, const DoubleByteTable &doubles) noexcept {
  for (std::size_t size = std::min(text.size(), DoubleByteTable::longest); size > 1; --size)
    if (const std::size_t index = doubles.indexOfText(text.substr(0, size)); index != none) {
      text.remove_prefix(size);
      return index;
    }
  return none;
}

std::optional<std::string> encode(std::string_view text, ShiftJIS form) {
  const SingleByteTable &singles = singleBytesOf(form);
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    if (static_cast<unsigned char>(text.front()) >= 0x80)
      if (const std::size_t index = takeDoubleByte(text, doubleBytesOf(form)); index != none) {
        bytes += bytesAt(index);
        continue;
      }
    const int byte = singles.byteOf(takeCodePoint(text));
    if (byte < 0)
      return std::nullopt;
    bytes.push_back(static_cast<char>(byte));
  }
  return bytes;
}

} // namespace

std::optional<std::string> decodeShiftJIS(std::string_view bytes, ShiftJIS form) {
  try {
    return decode(bytes, form);
  } catch (const Unavailable &) {
    return std::nullopt;
  }
}

std::optional<std::string> encodeShiftJIS(std::string_view text, ShiftJIS form) {
  try {
    return encode(text, form);
  } catch (const Unavailable &) {
    return std::nullopt;
  }
}

} // namespace searchsystem
