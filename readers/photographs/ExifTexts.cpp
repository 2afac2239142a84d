#include "readers/photographs/ExifTexts.h"

#include "readers/photographs/CharacterSets.h"
#include "readers/photographs/JapaneseText.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace searchsystem {

namespace {

enum class Form : std::uint8_t {
  text,
  /// Two texts, of photographer and editor, divided by a NUL.
  texts,
  comment,
  utf16,
};

struct Tag {
  std::uint16_t number;
  Form form;
  FieldRole role;
  std::string_view name;
};

/// Ascending.
constexpr std::array<Tag, 15> tags{{
    {0x010E, Form::text, FieldRole::other, "Exif ImageDescription"},
    {0x010F, Form::text, FieldRole::maker, "Exif Make"},
    {0x0110, Form::text, FieldRole::model, "Exif Model"},
    {0x013B, Form::text, FieldRole::other, "Exif Artist"},
    {0x8298, Form::texts, FieldRole::other, "Exif Copyright"},
    {0x9286, Form::comment, FieldRole::other, "Exif UserComment"},
    {0x9C9B, Form::utf16, FieldRole::other, "Exif XPTitle"},
    {0x9C9C, Form::utf16, FieldRole::other, "Exif XPComment"},
    {0x9C9D, Form::utf16, FieldRole::other, "Exif XPAuthor"},
    {0x9C9E, Form::utf16, FieldRole::other, "Exif XPKeywords"},
    {0x9C9F, Form::utf16, FieldRole::other, "Exif XPSubject"},
    {0xA433, Form::text, FieldRole::other, "Exif LensMake"},
    {0xA434, Form::text, FieldRole::other, "Exif LensModel"},
    {0xA436, Form::text, FieldRole::other, "Exif ImageTitle"},
    {0xA437, Form::text, FieldRole::other, "Exif Photographer"},
}};
constexpr std::uint16_t tagDateTimeOriginal = 0x9003;
constexpr std::uint16_t tagDateTimeDigitized = 0x9004;

std::string withBlanksForNuls(std::string bytes) {
  std::replace(bytes.begin(), bytes.end(), '\0', ' ');
  return bytes;
}

bool isSevenBit(std::string_view bytes) noexcept {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Up to the NUL that ends it.
std::string xpText(std::string_view bytes) {
  std::size_t length = 0;
  while (length + 2 <= bytes.size() && (bytes[length] != '\0' || bytes[length + 1] != '\0'))
    length += 2;
  return markedUtf16ToUtf8(bytes.substr(0, length), std::endian::little);
}

std::string toUtf8(std::string bytes, Form form, std::endian order) {
  switch (form) {
  case Form::text:
    return textOfUnknownSet(untilNul(bytes));
  case Form::texts:
    return textOfUnknownSet(withBlanksForNuls(std::move(bytes)));
  case Form::comment:
    return userCommentToUtf8(bytes, order);
  default:
    return xpText(bytes);
  }
}

void readDate(const TIFFEntry &entry, DateSource source, FieldCollector &fields) {
  constexpr std::size_t longestDate = 32;
  fields.addDate(
      source,
      parsePhotographDate(entry.value.at(
          0, static_cast<std::size_t>(std::min<std::uint64_t>(entry.value.size(), longestDate)))));
}

} // namespace

std::string userCommentToUtf8(std::string_view bytes, std::endian order) {
  constexpr std::size_t codeSize = 8;
  const std::string_view code = untilNul(bytes.substr(0, codeSize));
  const bool isCoded = bytes.size() >= codeSize;
  const std::string_view text = isCoded ? bytes.substr(codeSize) : std::string_view();
  if (isCoded && code.starts_with("UNICODE"))
    return markedUtf16ToUtf8(text, order);
  // Some programs write the code, but not the encoding, which has seven bits.
  if (isCoded && code.starts_with("JIS") && isSevenBit(text))
    return japaneseToUtf8(untilNul(text));
  if (isCoded && (code.starts_with("ASCII") || code.starts_with("JIS") ||
                  code.find_first_not_of(' ') == code.npos))
    return textOfUnknownSet(untilNul(text));
  return textOfUnknownSet(untilNul(bytes));
}

void readExifText(const TIFFEntry &entry, std::endian order, FieldCollector &fields) {
  if (entry.tag == tagDateTimeOriginal)
    return readDate(entry, DateSource::exifOriginal, fields);
  if (entry.tag == tagDateTimeDigitized)
    return readDate(entry, DateSource::exifDigitized, fields);
  const auto *const tag =
      std::lower_bound(tags.begin(), tags.end(), entry.tag,
                       [](const Tag &one, std::uint16_t number) { return one.number < number; });
  if (tag != tags.end() && tag->number == entry.tag && entry.unitSize == 1)
    fields.add(tag->name, toUtf8(entry.value.read(ReadBudget::longestText), tag->form, order),
               tag->role);
}

} // namespace searchsystem
