#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// Which byte of a number comes first in a file.
enum class ByteOrder : std::uint8_t { Little, Big };

/// Writes the tags of a photograph as a TIFF structure.
///
/// Directory 0 is that of the image, 1 the EXIF directory. Nothing is checked, so that damaged
/// structures can be written, too.
class PhotoTags {
public:
  enum Type : std::uint16_t { Byte = 1, ASCII = 2, Short = 3, Long = 4, Undefined = 7 };

  explicit PhotoTags(ByteOrder order) : order_(order) {}

  /// Tags as they are expected of every photograph.
  static PhotoTags photo(ByteOrder order = ByteOrder::Little) {
    return PhotoTags(order).field(1, 0x9000, Undefined, 4, "0230");
  }

  /// A number in the byte order of the file.
  [[nodiscard]] std::string number(std::uint64_t value, std::size_t size) const {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
      bytes.push_back(
          static_cast<char>(value >> 8 * (order_ == ByteOrder::Little ? i : size - 1 - i)));
    return bytes;
  }

  PhotoTags &field(int directory, std::uint16_t tag, std::uint16_t type, std::uint32_t count,
                   const std::string &value) {
    fields_.push_back({directory, tag, type, count, value, true});
    return *this;
  }

  /// A field whose place for the value holds this number, wherever that leads.
  PhotoTags &fieldAt(int directory, std::uint16_t tag, std::uint16_t type, std::uint32_t count,
                     std::uint32_t place) {
    fields_.push_back({directory, tag, type, count, number(place, 4), false});
    return *this;
  }

  PhotoTags &text(int directory, std::uint16_t tag, std::string_view value) {
    const std::string bytes = std::string(value) + '\0';
    return field(directory, tag, ASCII, static_cast<std::uint32_t>(bytes.size()), bytes);
  }

  PhotoTags &taken(std::string_view date) { return text(1, 0x9003, date); }

  /// A comment; the code is filled up to eight bytes.
  PhotoTags &comment(std::string code, std::string_view text) {
    code.resize(8);
    code += text;
    return field(1, 0x9286, Undefined, static_cast<std::uint32_t>(code.size()), code);
  }

  /// The structure: the header, zeros up to the first directory, the directories, their values.
  [[nodiscard]] std::string tiff(std::size_t firstDirectory = 8) const {
    std::vector<Field> main, exif;
    for (const Field &field : fields_)
      (field.directory == 0 ? main : exif).push_back(field);
    const std::size_t exifDirectory = firstDirectory + sizeOf(main.size() + (exif.empty() ? 0 : 1));
    if (!exif.empty())
      main.push_back({0, 0x8769, Long, 1, number(exifDirectory, 4), false});
    std::string values;
    const std::size_t end = exifDirectory + (exif.empty() ? 0 : sizeOf(exif.size()));
    std::string bytes =
        (order_ == ByteOrder::Little ? "II" : "MM") + number(42, 2) + number(firstDirectory, 4);
    bytes.resize(std::max(firstDirectory, bytes.size()));
    bytes += directory(main, end, values);
    if (!exif.empty())
      bytes += directory(exif, end, values);
    return bytes + values;
  }

  /// The structure as a block of a JPEG file.
  [[nodiscard]] std::string exifSegment() const;

private:
  struct Field {
    int directory;
    std::uint16_t tag, type;
    std::uint32_t count;
    std::string value;
    /// The value goes behind the directories where it is too long for its place.
    bool mayMove;
  };

  static std::size_t sizeOf(std::size_t fieldCount) { return 2 + 12 * fieldCount + 4; }

  [[nodiscard]] std::string directory(std::vector<Field> fields, std::size_t valuesBegin,
                                      std::string &values) const {
    std::stable_sort(fields.begin(), fields.end(),
                     [](const Field &a, const Field &b) { return a.tag < b.tag; });
    std::string bytes = number(fields.size(), 2);
    for (const Field &field : fields) {
      std::string place = field.value;
      if (field.mayMove && place.size() > 4) {
        place = number(valuesBegin + values.size(), 4);
        values += field.value;
        values.resize(values.size() + values.size() % 2);
      }
      place.resize(4);
      bytes += number(field.tag, 2) + number(field.type, 2) + number(field.count, 4) + place;
    }
    return bytes + number(0, 4);
  }

  ByteOrder order_;
  std::vector<Field> fields_;
};

/// A segment of a JPEG file with its length.
inline std::string jpegSegment(unsigned char marker, std::string_view content) {
  std::string bytes{'\xFF', static_cast<char>(marker)};
  const std::size_t length = content.size() + 2;
  bytes += {static_cast<char>(length >> 8), static_cast<char>(length)};
  return bytes.append(content);
}

inline std::string PhotoTags::exifSegment() const {
  return jpegSegment(0xE1, std::string("Exif\0", 6) + tiff());
}

/// A JPEG file of segments, ended by so many bytes of an image that is none.
inline std::string jpegFile(std::initializer_list<std::string> segments,
                            std::size_t imageSize = 100) {
  std::string bytes = "\xFF\xD8";
  for (const std::string &segment : segments)
    bytes += segment;
  return bytes + jpegSegment(0xDA, std::string("\1\1\0\0\x3F\0", 6)) + std::string(imageSize, 'x') +
         "\xFF\xD9";
}

} // namespace searchsystem
