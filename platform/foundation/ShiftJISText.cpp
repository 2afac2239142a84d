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

constexpr bool isLead(std::size_t byte) noexcept {
  return (byte > 0x80 && byte < 0xA0) || (byte >= 0xE0 && byte < 0xFD);
}

/// The table index of a two-byte character.
constexpr std::size_t indexOf(unsigned char lead, unsigned char trail) noexcept {
  return (lead & std::size_t{0x3F}) << 8 | trail;
}

std::string bytesAt(std::size_t index) {
  const std::size_t row = index >> 8;
  return {static_cast<char>(row | (row < 0x20 ? 0x80 : 0xC0)), static_cast<char>(index)};
}

/// Thrown if the C library's two-byte characters are not available, perhaps temporarily.
struct Unavailable {};

/// The two-byte characters, converted by iconv once, one by one: opening it for each text would
/// cost more than the text, and its single bytes differ from ours.
class DoubleByteTable {
public:
  /// Throws `std::bad_alloc` and `Unavailable`.
  explicit DoubleByteTable(ShiftJIS form) : characters_(std::size_t{64} << 8) {
    IconvText iconv("UTF-8", form == ShiftJIS::MacJapanese ? "SJIS" : "SHIFT_JISX0213");
    if (!iconv.isOpen())
      throw Unavailable();
    for (std::size_t i = 0; i < characters_.size(); ++i)
      if (const std::string bytes = bytesAt(i); isLead(static_cast<unsigned char>(bytes[0])))
        if (const auto text = iconv.convert(bytes); text && text->size() <= longest)
          text->copy(characters_[i].data(), longest);
    if (form == ShiftJIS::MacJapanese)
      characters_[indexOf(0x81, 0x5C)] = {"\u2014"};
    for (std::size_t i = 0; i < characters_.size(); ++i)
      if (!at(i).empty())
        byText_.push_back(static_cast<std::uint16_t>(i));
    std::ranges::sort(byText_, {}, [this](std::size_t index) { return at(index); });
  }

  /// The longest character, in bytes of UTF-8: some of JIS X 0213 are two code points in Unicode, a
  /// letter and a combining mark.
  static constexpr std::size_t longest = 7;

  /// A character in UTF-8; empty if there is none.
  [[nodiscard]] std::string_view at(std::size_t index) const noexcept {
    return characters_[index].data();
  }

  /// The index of a character given in UTF-8.
  [[nodiscard]] std::optional<std::size_t> indexOfText(std::string_view text) const noexcept {
    const auto found = std::ranges::lower_bound(byText_, text, {},
                                                [this](std::size_t index) { return at(index); });
    return found != byText_.end() && at(*found) == text ? std::optional(*found) : std::nullopt;
  }

private:
  /// Each ended by a NUL.
  std::vector<std::array<char, longest + 1>> characters_;
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

} // namespace

std::optional<std::string> decodeShiftJIS(std::string_view bytes, ShiftJIS form) try {
  const SingleByteTable &singles = singleBytesOf(form);
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
    if (const char16_t single = characterOf(bytes[i], singles); single != notAlone) {
      appendCodePoint(text, single);
      continue;
    }
    const auto lead = static_cast<unsigned char>(bytes[i]);
    if (!isLead(lead) || ++i == bytes.size())
      return std::nullopt;
    const std::string_view character =
        doubleBytesOf(form).at(indexOf(lead, static_cast<unsigned char>(bytes[i])));
    if (character.empty())
      return std::nullopt;
    text += character;
  }
  return text;
} catch (const Unavailable &) {
  return std::nullopt;
}

std::optional<std::string> encodeShiftJIS(std::string_view text, ShiftJIS form) try {
  return encodeBytes(text, singleBytesOf(form), [form](std::string_view &rest, std::string &bytes) {
    if (static_cast<unsigned char>(rest.front()) < 0x80)
      return false;
    for (std::size_t size = std::min(rest.size(), DoubleByteTable::longest); size > 1; --size)
      if (const auto index = doubleBytesOf(form).indexOfText(rest.substr(0, size))) {
        bytes += bytesAt(*index);
        rest.remove_prefix(size);
        return true;
      }
    return false;
  });
} catch (const Unavailable &) {
  return std::nullopt;
}

} // namespace searchsystem
