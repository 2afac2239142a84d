#include "platform/content/FileKinds.h"

#include "platform/foundation/NSString.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace searchsystem {

namespace {

enum class Group : std::uint8_t { None, Photograph, Document, Other };

struct Kind {
  std::string_view extension;
  Group group;
};

constexpr Kind kinds[] = {
    {"jpg", Group::Photograph},
    {"jpeg", Group::Photograph},
    {"jpe", Group::Photograph},
    {"jfif", Group::Photograph},
    {"tif", Group::Photograph},
    {"tiff", Group::Photograph},
    {"png", Group::Photograph},
    {"webp", Group::Photograph},
    {"heic", Group::Photograph},
    {"heif", Group::Photograph},
    {"hif", Group::Photograph},
    {"avif", Group::Photograph},
    {"jxl", Group::Photograph},
    {"psd", Group::Photograph},
    // Raw files of cameras.
    {"dng", Group::Photograph},
    {"cr2", Group::Photograph},
    {"cr3", Group::Photograph},
    {"crw", Group::Photograph},
    {"nef", Group::Photograph},
    {"nrw", Group::Photograph},
    {"arw", Group::Photograph},
    {"sr2", Group::Photograph},
    {"orf", Group::Photograph},
    {"rw2", Group::Photograph},
    {"raf", Group::Photograph},
    {"pef", Group::Photograph},
    {"srw", Group::Photograph},
    {"3fr", Group::Photograph},
    {"fff", Group::Photograph},
    {"iiq", Group::Photograph},
    {"rwl", Group::Photograph},
    {"pdf", Group::Document},
    {"gif", Group::Other},
    {"bmp", Group::Other},
    {"psb", Group::Other},
    {"svg", Group::Other},
    {"eps", Group::Other},
    {"ai", Group::Other},
    {"pct", Group::Other},
    {"pict", Group::Other},
    {"jp2", Group::Other},
    {"tga", Group::Other},
    {"exr", Group::Other},
    {"hdr", Group::Other},
};

/// An extension of the table in one number, its letters small; 0 for one that is longer than all.
constexpr std::uint32_t numberOf(std::string_view extension) noexcept {
  if (extension.size() > sizeof(std::uint32_t))
    return 0;
  std::uint32_t number = 0;
  for (const char c : extension) {
    const bool isCapital = c >= 'A' && c <= 'Z';
    number = number << 8 | static_cast<unsigned char>(isCapital ? c + ('a' - 'A') : c);
  }
  return number;
}

struct Slot {
  std::uint32_t number = 0;
  Group group = Group::None;
};

constexpr std::size_t slotBits = 8;

constexpr std::size_t firstSlot(std::uint32_t number) noexcept {
  constexpr std::uint32_t factor = 0x9E3779B1;
  return number * factor >> (32 - slotBits);
}

constexpr auto slots = [] {
  std::array<Slot, 1 << slotBits> table{};
  for (const Kind &kind : kinds) {
    const std::uint32_t number = numberOf(kind.extension);
    std::size_t at = firstSlot(number);
    while (table[at].number != 0)
      at = (at + 1) % table.size();
    table[at] = {number, kind.group};
  }
  return table;
}();

Group groupOf(std::string_view extension) noexcept {
  const std::uint32_t number = numberOf(extension);
  for (std::size_t at = firstSlot(number); slots[at].number != 0; at = (at + 1) % slots.size())
    if (slots[at].number == number)
      return slots[at].group;
  return Group::None;
}

std::string lowered(std::string_view text) {
  std::string result(text);
  for (char &c : result)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c + ('a' - 'A'));
  return result;
}

bool isOfType(Group group, int fileType) noexcept {
  switch (fileType) {
  case 0:
    return group == Group::Photograph;
  case 1:
    return group == Group::Document;
  case 2:
    return group == Group::Photograph || group == Group::Document;
  case 3:
    return true;
  default:
    return false;
  }
}

bool isEqualInAnyCase(std::string_view text, std::string_view small) noexcept {
  return std::ranges::equal(text, small, [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b;
  });
}

} // namespace

FileKinds::FileKinds(const NSArray &extensions) {
  auto only = std::make_shared<std::vector<std::string>>();
  for (std::size_t i = 0; i < extensions.count(); ++i)
    if (const auto *text = dynamic_cast<const NSString *>(extensions.objectAtIndex(i)))
      only->push_back(lowered(text->view()));
  only_ = std::move(only);
}

bool FileKinds::includes(std::string_view extension, int fileType) const noexcept {
  const Group group = groupOf(extension);
  if (only_ == nullptr)
    return group != Group::None && isOfType(group, fileType);
  return isOfType(group, fileType) &&
         std::ranges::any_of(*only_, [extension](const std::string &small) {
           return isEqualInAnyCase(extension, small);
         });
}

bool FileKinds::isDocument(std::string_view extension) noexcept {
  return groupOf(extension) == Group::Document;
}

bool FileKinds::isPhotograph(std::string_view extension) noexcept {
  return groupOf(extension) == Group::Photograph;
}

} // namespace searchsystem
