#include "readers/photographs/PNGText.h"

#include "readers/photographs/CharacterSets.h"
#include "readers/photographs/ComparableText.h"
#include "readers/photographs/Decompressed.h"
#include "readers/photographs/IPTCRecords.h"
#include "readers/photographs/PhotoshopResources.h"
#include "readers/photographs/TIFFBlock.h"
#include "readers/photographs/XMPPacket.h"

#include <algorithm>
#include <optional>
#include <string>

namespace searchsystem {

namespace {

struct Text {
  std::string_view keyword;
  /// As it is written, or inflated.
  std::string value;
  /// Otherwise Latin-1, which some writers take for UTF-8.
  bool isUtf8;
};

/// Takes what stands before the next NUL, and that.
std::string_view takeString(std::string_view &bytes) noexcept {
  const std::string_view text = untilNul(bytes);
  bytes.remove_prefix(std::min(text.size() + 1, bytes.size()));
  return text;
}

std::optional<Text> parse(std::string_view kind, std::string_view chunk, ReadBudget &budget) {
  Text text{takeString(chunk), {}, false};
  if (kind == "tEXt") {
    text.value = chunk;
    return text;
  }
  // A method follows, of which there is one; in iTXt a flag before it, and two texts behind it.
  const bool isInternational = kind == "iTXt";
  const std::size_t headerSize = isInternational ? 2 : 1;
  if (chunk.size() < headerSize)
    return std::nullopt;
  const bool isDeflated = !isInternational || chunk[0] != 0;
  chunk.remove_prefix(headerSize);
  if (isInternational) {
    takeString(chunk);
    takeString(chunk);
    text.isUtf8 = true;
  }
  text.value = isDeflated ? inflated(chunk, budget) : chunk;
  return text;
}

int digitOf(char c) noexcept {
  return c >= '0' && c <= '9'   ? c - '0'
         : c >= 'a' && c <= 'f' ? c - 'a' + 10
         : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                : -1;
}

/// A block that is written as a line end, its name, its size, and pairs of hexadecimal digits.
std::string profileBytes(std::string_view text) {
  for (int line = 0; line < 3; ++line)
    text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
  std::string bytes;
  int high = -1;
  for (const char c : text) {
    const int digit = digitOf(c);
    if (digit < 0)
      continue;
    if (high >= 0)
      bytes += static_cast<char>(high << 4 | digit);
    high = high >= 0 ? -1 : digit;
  }
  return bytes;
}

void readProfile(std::string_view name, std::string_view text, PhotographReading &reading) {
  if (text.empty() ||
      (name != "exif" && name != "APP1" && name != "iptc" && name != "8bim" && name != "xmp"))
    return;
  const std::string bytes = profileBytes(text);
  constexpr std::string_view xmpMark{"http://ns.adobe.com/xap/1.0/\0", 29};
  if (name == "xmp" || bytes.starts_with(xmpMark)) {
    const std::size_t begin = bytes.starts_with(xmpMark) ? xmpMark.size() : 0;
    readXMPPacket(std::string_view(bytes).substr(begin), reading, XMPPlace::file);
    return;
  }
  FileWindows memory(bytes, reading.budget);
  if (name == "exif" || name == "APP1")
    readExifBlock(ByteRange(memory), reading);
  else if (bytes.starts_with(iptcMark))
    readIPTCRecords(bytes, reading.fields);
  else
    readPhotoshopResources(ByteRange(memory), reading);
}

/// Some programs write the keywords of the standard in lower case.
std::string fieldName(std::string_view keyword) {
  std::string name = comparableText(textOfUnknownSet(keyword));
  if (!name.empty() && name[0] >= 'a' && name[0] <= 'z')
    name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return "PNG " + name;
}

} // namespace

void readPNGText(std::string_view kind, std::string_view chunk, PhotographReading &reading) {
  const auto text = parse(kind, chunk, reading.budget);
  if (!text)
    return;
  const std::string_view keyword = text->keyword;
  constexpr std::size_t longestKeyword = 79;
  if (keyword.empty() || keyword.size() > longestKeyword)
    return;
  constexpr std::string_view profile = "Raw profile type ";
  if (keyword == "XML:com.adobe.xmp") {
    readXMPPacket(text->value, reading, XMPPlace::file);
  } else if (keyword.starts_with(profile)) {
    readProfile(keyword.substr(profile.size()), text->value, reading);
  } else if (keyword == "Creation Time") {
    reading.fields.addDate(DateSource::pngCreation, parseLetterDate(text->value));
  } else if (keyword != "Software" && keyword.find(':') == std::string_view::npos) {
    const std::string_view value = std::string_view(text->value).substr(0, ReadBudget::longestText);
    reading.fields.add(fieldName(keyword),
                       text->isUtf8 ? repairedUtf8(value) : textOfUnknownSet(value));
  }
}

} // namespace searchsystem
